// The generic decoder: every tag, one level of nesting, truncation, traces.
#include <gtest/gtest.h>

#include "CSerializedMsg.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

const char kSignature[] = "virtual void CSerializedMsg::String2IWbem(char*, IWbemClassObject&) ";
typedef std::vector<std::string> Strings;

void Decode(const std::string& body, IWbemClassObject& obj) {
    qel_test::TextBuffer text(body);
    CSerializedMsg("dec").String2IWbem(text.get(), obj);
}

TEST(DecoderTest, EveryTagGivesItsValueType) {
    IWbemClassObject obj;
    obj.push("I", 9);
    Decode(
        "string;S;a%!@b;int;I;4294967297;long;L;-2;ulong;U;-1;ulong;B;99999999999999999999;"
        "bool;T;true;bool;F;1;string[];A;a!#b!#c;",
        obj);
    EXPECT_EQ(*obj.GetAs<std::string>("S"), "a;b");
    EXPECT_EQ(*obj.GetAs<int>("I"), 1);  // the later entry stands on top
    EXPECT_EQ(*obj.GetAs<long>("L"), -2);
    EXPECT_EQ(*obj.GetAs<unsigned long>("U"), 18446744073709551615UL);
    EXPECT_EQ(*obj.GetAs<unsigned long>("B"), 9223372036854775807UL);
    EXPECT_TRUE(*obj.GetAs<bool>("T"));
    EXPECT_FALSE(*obj.GetAs<bool>("F"));
    EXPECT_EQ(*obj.GetAs<Strings>("A"), (Strings{"a", "b", "c"}));
    EXPECT_EQ(obj.size(), 9u);
    const std::pair<const char*, Strings> arrays[] = {
        {"a", {"a"}},    {"", {}}, {"a!#", {"a", ""}}, {"!#", {"", ""}}, {"a!#b%!@c", {"a", "b"}},
        {"x%!@y", {"x"}}};
    for (const auto& c : arrays) {
        IWbemClassObject one;
        Decode(std::string("string[];L;") + c.first + ";", one);
        EXPECT_EQ(*one.GetAs<Strings>("L"), c.second) << c.first;
    }
}

TEST(DecoderTest, OneNestedObjectTakesEverythingAfterTheFirstClassItem) {
    qel_test::TraceRecorder traces;
    IWbemClassObject obj;
    Decode("string;A;x;class[];N;ignored;int;I;3;class;Second;;double;D;1;string;B;y;", obj);
    ASSERT_EQ(obj.size(), 2u);
    EXPECT_EQ(obj.begin()->first, "A");
    IWbemClassObject* nested = *obj.GetAs<IWbemClassObject*>("N");
    EXPECT_EQ(nested->size(), 2u);
    EXPECT_EQ(*nested->GetAs<std::string>("B"), "y");
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "unsupported node type (Second)"));
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "unsupported type : D"));
    EXPECT_EQ(traces.Lines()[0].source, "som");
    CSerializedMsg("dec").String2IWbem(nullptr, obj);
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "parameter is NULL"));
}

TEST(DecoderTest, TruncatedTextKeepsTheCompleteItemsAndTheNestedObject) {
    const std::string full = "string;A;x;class;N;;int;I;3;string;B;yy;";
    for (std::size_t cut = 0; cut <= full.size(); ++cut) {
        IWbemClassObject obj;
        Decode(full.substr(0, cut), obj);
        EXPECT_EQ(obj.size(), (cut >= 11 ? 1u : 0u) + (cut >= 20 ? 1u : 0u)) << cut;
    }
}

TEST(DecoderTest, RoundTripThroughTheEncoder) {
    IWbemClassObject source;
    source.push("S", std::string("semi;colon %!@"));
    source.push("L", 123456789012L);
    source.push("V", Strings{"one", "", "three"});
    std::string text;
    CSerializedMsg("rt").IWbem2String(source, text);
    IWbemClassObject back;
    Decode(text, back);
    EXPECT_EQ(*back.GetAs<std::string>("S"), "semi;colon ;");
    EXPECT_EQ(*back.GetAs<long>("L"), 123456789012L);
    EXPECT_EQ(*back.GetAs<Strings>("V"), (Strings{"one", "", "three"}));
}

}  // namespace

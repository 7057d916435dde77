// The generic decoder: every tag, one level of nesting, truncation, traces.
#include <gtest/gtest.h>

#include "CSerializedMsg.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;

const char kSignature[] = "virtual void CSerializedMsg::String2IWbem(char*, IWbemClassObject&) ";

void Decode(const std::string& body, IWbemClassObject& obj) {
    TextBuffer text(body);
    CSerializedMsg codec("dec");
    codec.String2IWbem(text.get(), obj);
}

TEST(DecoderTest, EveryTagGivesItsValueType) {
    IWbemClassObject obj;
    Decode(
        "string;S;a%!@b;int;I;4294967297;long;L;-2;ulong;U;-1;ulong;B;99999999999999999999;"
        "bool;T;true;bool;F;1;string[];A;a!#b!#c;",
        obj);
    EXPECT_EQ(*obj.GetAs<std::string>("S"), "a;b");
    EXPECT_EQ(*obj.GetAs<int>("I"), 1);
    EXPECT_EQ(*obj.GetAs<long>("L"), -2);
    EXPECT_EQ(*obj.GetAs<unsigned long>("U"), 18446744073709551615UL);
    EXPECT_EQ(*obj.GetAs<unsigned long>("B"), 9223372036854775807UL);
    EXPECT_TRUE(*obj.GetAs<bool>("T"));
    EXPECT_FALSE(*obj.GetAs<bool>("F"));
    EXPECT_EQ(*obj.GetAs<std::vector<std::string>>("A"),
              (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(obj.size(), 8u);
}

TEST(DecoderTest, StringArraySplitting) {
    struct Case {
        const char* value;
        std::vector<std::string> elements;
    };
    const Case cases[] = {
        {"a", {"a"}},           {"", {}},           {"a!#", {"a", ""}},
        {"!#", {"", ""}},       {"a!#b%!@c", {"a", "b"}}, {"x%!@y", {"x"}},
    };
    for (const Case& c : cases) {
        IWbemClassObject obj;
        Decode(std::string("string[];L;") + c.value + ";", obj);
        ASSERT_NE(obj.GetAs<std::vector<std::string>>("L"), nullptr) << c.value;
        EXPECT_EQ(*obj.GetAs<std::vector<std::string>>("L"), c.elements) << c.value;
    }
}

TEST(DecoderTest, ItemsAfterTheFirstClassItemGoIntoOneNestedObject) {
    IWbemClassObject obj;
    Decode("string;A;x;class;N;ignored;int;I;3;string;B;y;", obj);
    ASSERT_EQ(obj.size(), 2u);
    auto it = obj.begin();
    EXPECT_EQ(it->first, "A");
    ++it;
    EXPECT_EQ(it->first, "N");
    IWbemClassObject* nested = boost::any_cast<IWbemClassObject*>(it->second);
    EXPECT_EQ(*nested->GetAs<int>("I"), 3);
    EXPECT_EQ(*nested->GetAs<std::string>("B"), "y");
    EXPECT_EQ(nested->size(), 2u);
}

TEST(DecoderTest, SecondClassItemIsTracedAndItemsStayInTheOpenObject) {
    qel_test::TraceRecorder traces;
    IWbemClassObject obj;
    Decode("class[];First;;class;Second;;string;C;z;", obj);
    ASSERT_EQ(obj.size(), 1u);
    EXPECT_EQ(obj.begin()->first, "First");
    IWbemClassObject* nested = boost::any_cast<IWbemClassObject*>(obj.begin()->second);
    EXPECT_EQ(*nested->GetAs<std::string>("C"), "z");
    qel_test::TraceLine line;
    ASSERT_TRUE(traces.Find(std::string(kSignature) + "unsupported node type (Second)", &line));
    EXPECT_EQ(line.source, "som");
    EXPECT_EQ(line.level, 2);
}

TEST(DecoderTest, UnknownTagIsTracedAndSkipped) {
    qel_test::TraceRecorder traces;
    IWbemClassObject obj;
    Decode("double;D;1.5;uint;U;3;string;A;x;", obj);
    EXPECT_EQ(obj.size(), 1u);
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "unsupported type : D"));
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "unsupported type : U"));
}

TEST(DecoderTest, TruncatedTextKeepsTheCompleteItemsAndTheNestedObject) {
    const std::string full = "string;A;x;class;N;;int;I;3;string;B;yy;";
    for (std::size_t cut = 0; cut <= full.size(); ++cut) {
        IWbemClassObject obj;
        Decode(full.substr(0, cut), obj);
        std::size_t expected = cut >= 11 ? 1 : 0;
        if (cut >= 20) ++expected;  // the nested object, once opened
        EXPECT_EQ(obj.size(), expected) << cut;
    }
}

TEST(DecoderTest, AppendsToTheCallersObjectAndHandlesNull) {
    qel_test::TraceRecorder traces;
    IWbemClassObject obj;
    obj.push("Old", 1);
    Decode("int;Old;2;", obj);
    EXPECT_EQ(obj.size(), 2u);
    EXPECT_EQ(*obj.GetAs<int>("Old"), 2);  // the later entry stands on top
    CSerializedMsg codec("dec");
    codec.String2IWbem(nullptr, obj);
    EXPECT_EQ(obj.size(), 2u);
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "parameter is NULL"));
}

TEST(DecoderTest, RoundTripThroughTheEncoder) {
    IWbemClassObject source;
    source.push("S", std::string("semi;colon %!@"));
    source.push("I", -7);
    source.push("L", 123456789012L);
    source.push("U", 5UL);
    source.push("B", true);
    source.push("V", std::vector<std::string>{"one", "", "three"});
    CSerializedMsg codec("rt");
    std::string text;
    codec.IWbem2String(source, text);
    IWbemClassObject back;
    Decode(text, back);
    EXPECT_EQ(*back.GetAs<std::string>("S"), "semi;colon ;");
    EXPECT_EQ(*back.GetAs<int>("I"), -7);
    EXPECT_EQ(*back.GetAs<long>("L"), 123456789012L);
    EXPECT_EQ(*back.GetAs<unsigned long>("U"), 5UL);
    EXPECT_TRUE(*back.GetAs<bool>("B"));
    EXPECT_EQ(*back.GetAs<std::vector<std::string>>("V"),
              (std::vector<std::string>{"one", "", "three"}));
}

}  // namespace

// The generic decoder: every tag, one level of nesting, truncation, traces.
#include <gtest/gtest.h>

#include "CSerializedMsg.h"
#include "common/object_json.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

const char kSignature[] = "virtual void CSerializedMsg::String2IWbem(char*, IWbemClassObject&) ";

std::string Decode(const std::string& body, IWbemClassObject* into = nullptr) {
    IWbemClassObject local;
    IWbemClassObject& obj = into ? *into : local;
    qel_test::TextBuffer text(body);
    CSerializedMsg("dec").String2IWbem(text.get(), obj);
    return qel::TreeText(obj);
}

TEST(DecoderTest, EveryTagNestingAndTruncation) {
    qel_test::TraceRecorder traces;
    const std::pair<std::string, std::string> cases[] = {
        // An empty array has no element; the last element ends at its first ";".
        {"string;S;a%!@b;int;I;4294967297;long;L;-2;ulong;U;-1;ulong;B;99999999999999999999;"
         "bool;T;true;bool;F;1;string[];A;a!#b!#c;string[];M;;string[];P;a!#b%!@c;",
         R"({"S":"a;b","I":1,"L":-2,"U":18446744073709551615,"B":9223372036854775807,)"
         R"("T":true,"F":false,"A":["a","b","c"],"M":[],"P":["a","b"]})"},
        // One nested object takes everything after the first class item.
        {"string;A;x;class[];N;ignored;int;I;3;class;Second;;double;D;1;string;B;y;",
         R"({"A":"x","N":{"I":3,"B":"y"}})"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Decode(c.first), c.second) << c.first;
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "unsupported node type (Second)"));
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "unsupported type : D"));
    EXPECT_EQ(traces.Lines()[0].source, "som");
    IWbemClassObject obj;
    CSerializedMsg("dec").String2IWbem(nullptr, obj);
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "parameter is NULL"));
    // A cut text keeps the complete items and the nested object.
    const std::string full = "string;A;x;class;N;;int;I;3;string;B;yy;";
    for (std::size_t cut = 0; cut <= full.size(); ++cut) {
        IWbemClassObject cutObj;
        Decode(full.substr(0, cut), &cutObj);
        EXPECT_EQ(cutObj.size(), (cut >= 11 ? 1u : 0u) + (cut >= 20 ? 1u : 0u)) << cut;
    }
}

}  // namespace

// The encoder: every value type, order, escapes, nesting and faults.
#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <stdexcept>

#include "CSerializedMsg.h"
#include "support/trace_recorder.h"

namespace {

typedef std::vector<IWbemClassObject*> Objects;
const char kSignature[] =
    "virtual void CSerializedMsg::IWbem2String(IWbemClassObject&, std::string&) ";

std::string Encode(IWbemClassObject& obj, std::string out = "") {
    CSerializedMsg("enc").IWbem2String(obj, out);
    return out;
}

IWbemClassObject* WithInt(const char* name, int value) {
    auto* obj = new IWbemClassObject;
    obj->push(name, value);
    return obj;
}

TEST(EncoderTest, EveryValueTypeWritesItsItem) {
    qel_test::TraceRecorder traces;
    const std::pair<boost::any, std::string> cases[] = {
        {std::string("a;b"), "string;K;a%!@b;"},
        {std::string(), "string;K;;"},
        {-5, "int;K;-5;"},
        {7u, "uint;K;7;"},
        {-9223372036854775807L - 1, "long;K;-9223372036854775808;"},
        {18446744073709551615UL, "ulong;K;18446744073709551615;"},
        {true, "bool;K;true;"},
        {std::vector<std::string>{}, "string[];K;;"},
        {std::vector<std::string>{"x", "y"}, "string[];K;x!#y;"},
        {boost::shared_ptr<std::vector<std::string>>(new std::vector<std::string>{"s"}),
         "string[];K;s;"},
        {static_cast<IWbemClassObject*>(WithInt("I", 3)), "class;K;;int;I;3;"},
        {boost::shared_ptr<IWbemClassObject>(WithInt("I", 4)), "class;K;;int;I;4;"},
        {Objects{WithInt("I", 0), WithInt("I", 1)}, "class[];K;;int;I;0;int;I;1;"},
        {new Objects{WithInt("I", 0)}, "class[];K;;int;I;0;"},
        // Unknown types and null pointers are skipped, with a trace each.
        {1.5, ""},
        {boost::any(), ""},
        {static_cast<IWbemClassObject*>(nullptr), ""},
        {static_cast<Objects*>(nullptr), ""},
    };
    for (const auto& c : cases) {
        IWbemClassObject obj;
        obj.push("K", c.first);
        EXPECT_EQ(Encode(obj), c.second);
    }
    ASSERT_EQ(traces.Lines().size(), 4u);
    EXPECT_EQ(traces.Lines()[0].source + std::to_string(traces.Lines()[0].level), "enc2");
    EXPECT_EQ(traces.Texts()[0], std::string(kSignature) + "Invalid type of boost::any : K");
    // Entries in order, appended to the caller's text; nothing marks where a
    // nested object ends.
    IWbemClassObject obj;
    EXPECT_EQ(Encode(obj, "prefix"), "prefix");
    obj.push("B", std::string("1"));
    obj.push("N", WithInt("I", 3));
    obj.push("B", std::string("3"));
    IWbemClassObject e0, e1;  // shared_ptr vectors manage the vector, not its elements
    e0.push("I", 0);
    e1.push("I", 1);
    obj.push("S", boost::shared_ptr<Objects>(new Objects{&e0, &e1}));
    EXPECT_EQ(Encode(obj, "prefix"),
              "prefixstring;B;1;class;N;;int;I;3;string;B;3;class[];S;;int;I;0;int;I;1;");
}

// A codec whose nested encoding fails for objects marked "Boom".
class FailingCodec : public CSerializedMsg {
  public:
    FailingCodec() : CSerializedMsg("fail") {}
    void IWbem2String(IWbemClassObject& obj, std::string& out) override {
        if (const std::string* kind = obj.GetAs<std::string>("Boom")) {
            out += "partial;";
            if (*kind == "bad")
                throw std::bad_exception();
            throw std::runtime_error("other");
        }
        CSerializedMsg::IWbem2String(obj, out);
    }
};

TEST(EncoderTest, AFailingArrayElementIsTracedAndTheNextStillWritten) {
    qel_test::TraceRecorder traces;
    auto* bad = new IWbemClassObject;
    bad->push("Boom", std::string("bad"));
    auto* other = new IWbemClassObject;
    other->push("Boom", std::string("other"));
    IWbemClassObject obj;
    obj.push("L", Objects{bad, other, nullptr, WithInt("G", 1)});
    FailingCodec codec;
    std::string out;
    codec.IWbem2String(obj, out);
    EXPECT_EQ(out, "class[];L;;partial;partial;int;G;1;");
    EXPECT_TRUE(
        traces.Contains(std::string(kSignature) + "Segmentation fault (std::bad_exception)"));
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "Invalid parameter key=L"));
    // A single nested object is not guarded: its failure reaches the caller.
    IWbemClassObject single;
    auto* boom = new IWbemClassObject;
    boom->push("Boom", std::string("other"));
    single.push("M", boom);
    EXPECT_THROW(codec.IWbem2String(single, out), std::runtime_error);
}

}  // namespace

// The encoder, and through it the item writers: every value type, order,
// escapes, nesting and faults.
#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <memory>
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

IWbemClassObject* With(const char* name, const boost::any& value) {
    auto* obj = new IWbemClassObject;
    obj->push(name, value);
    return obj;
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

TEST(EncoderTest, EveryValueTypeOrderAndAFailingArrayElement) {
    qel_test::TraceRecorder traces;
    typedef std::vector<std::string> Strings;
    // Unknown types and null pointers are skipped, with a trace each.
    // clang-format off
    const std::pair<boost::any, std::string> cases[] = {
        {std::string("a;b"), "string;K;a%!@b;"}, {std::string(), "string;K;;"}, {-5, "int;K;-5;"},
        {4000000000u, "uint;K;4000000000;"},
        {-9223372036854775807L - 1, "long;K;-9223372036854775808;"},
        {18446744073709551615UL, "ulong;K;18446744073709551615;"}, {true, "bool;K;true;"},
        {false, "bool;K;false;"}, {Strings{}, "string[];K;;"},
        {Strings{"x", "y;z"}, "string[];K;x!#y%!@z;"},
        {boost::shared_ptr<Strings>(new Strings{"s"}), "string[];K;s;"},
        {static_cast<IWbemClassObject*>(With("I", 3)), "class;K;;int;I;3;"},
        {boost::shared_ptr<IWbemClassObject>(With("I", 4)), "class;K;;int;I;4;"},
        {Objects{With("I", 0), With("I", 1)}, "class[];K;;int;I;0;int;I;1;"},
        {new Objects{With("I", 0)}, "class[];K;;int;I;0;"}, {1.5, ""}, {boost::any(), ""},
        {static_cast<IWbemClassObject*>(nullptr), ""}, {static_cast<Objects*>(nullptr), ""}};
    // clang-format on
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
    obj.push("B", std::string("1"));
    obj.push("N", With("I", 3));
    obj.push("B", std::string("3"));
    // shared_ptr vectors manage the vector, not its elements
    std::unique_ptr<IWbemClassObject> e0(With("I", 0)), e1(With("I", 1));
    obj.push("S", boost::shared_ptr<Objects>(new Objects{e0.get(), e1.get()}));
    EXPECT_EQ(Encode(obj, "prefix"),
              "prefixstring;B;1;class;N;;int;I;3;string;B;3;class[];S;;int;I;0;int;I;1;");
    // A failing array element is traced and the next still written.
    IWbemClassObject failing;
    failing.push("L", Objects{With("Boom", std::string("bad")), With("Boom", std::string("other")),
                              nullptr, With("G", 1)});
    FailingCodec codec;
    std::string out;
    codec.IWbem2String(failing, out);
    EXPECT_EQ(out, "class[];L;;partial;partial;int;G;1;");
    EXPECT_TRUE(
        traces.Contains(std::string(kSignature) + "Segmentation fault (std::bad_exception)"));
    EXPECT_TRUE(traces.Contains(std::string(kSignature) + "Invalid parameter key=L"));
    // A single nested object is not guarded: its failure reaches the caller.
    IWbemClassObject single;
    single.push("M", With("Boom", std::string("other")));
    EXPECT_THROW(codec.IWbem2String(single, out), std::runtime_error);
}

}  // namespace

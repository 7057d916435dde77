// The encoder: every value type, order, escapes, nesting and faults.
#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <stdexcept>

#include "CSerializedMsg.h"
#include "support/trace_recorder.h"

namespace {

std::string Encode(IWbemClassObject& obj) {
    CSerializedMsg codec("enc");
    std::string out;
    codec.IWbem2String(obj, out);
    return out;
}

TEST(EncoderTest, EveryScalarTypeWritesItsTag) {
    struct Case {
        boost::any value;
        std::string expected;
    };
    const Case cases[] = {
        {std::string("abc"), "string;K;abc;"},
        {std::string("a;b"), "string;K;a%!@b;"},
        {std::string(), "string;K;;"},
        {-5, "int;K;-5;"},
        {7u, "uint;K;7;"},
        {2L, "long;K;2;"},
        {-9223372036854775807L - 1, "long;K;-9223372036854775808;"},
        {18446744073709551615UL, "ulong;K;18446744073709551615;"},
        {true, "bool;K;true;"},
        {false, "bool;K;false;"},
        {std::vector<std::string>{}, "string[];K;;"},
        {std::vector<std::string>{"x", "y"}, "string[];K;x!#y;"},
        {boost::shared_ptr<std::vector<std::string>>(new std::vector<std::string>{"s"}),
         "string[];K;s;"},
    };
    for (const Case& c : cases) {
        IWbemClassObject obj;
        obj.push("K", c.value);
        EXPECT_EQ(Encode(obj), c.expected);
    }
}

TEST(EncoderTest, EmptyObjectAppendsNothingAndKeepsCallerText) {
    IWbemClassObject obj;
    CSerializedMsg codec("enc");
    std::string out = "prefix";
    codec.IWbem2String(obj, out);
    EXPECT_EQ(out, "prefix");
    obj.push("A", 1);
    codec.IWbem2String(obj, out);
    EXPECT_EQ(out, "prefixint;A;1;");
}

TEST(EncoderTest, EntriesKeepInsertionOrderAndDuplicates) {
    IWbemClassObject obj;
    obj.push("B", std::string("1"));
    obj.push("A", std::string("2"));
    obj.push("B", std::string("3"));
    EXPECT_EQ(Encode(obj), "string;B;1;string;A;2;string;B;3;");
}

TEST(EncoderTest, NestedObjectFollowsItsClassItemWithoutEndMark) {
    IWbemClassObject obj;
    obj.push("A", std::string("a"));
    auto* nested = new IWbemClassObject;
    nested->push("I", 3);
    obj.push("N", nested);
    obj.push("B", std::string("b"));
    EXPECT_EQ(Encode(obj), "string;A;a;class;N;;int;I;3;string;B;b;");
}

TEST(EncoderTest, EveryObjectArrayFormWritesElementsInOrder) {
    auto makeElement = [](int i) {
        auto* e = new IWbemClassObject;
        e->push("I", i);
        return e;
    };
    const std::string expected = "class[];L;;int;I;0;int;I;1;";
    {
        IWbemClassObject obj;
        obj.push("L", std::vector<IWbemClassObject*>{makeElement(0), makeElement(1)});
        EXPECT_EQ(Encode(obj), expected);
    }
    {
        IWbemClassObject obj;
        obj.push("L", new std::vector<IWbemClassObject*>{makeElement(0), makeElement(1)});
        EXPECT_EQ(Encode(obj), expected);
    }
    {
        // shared_ptr entries manage the vector, not its elements.
        IWbemClassObject e0, e1;
        e0.push("I", 0);
        e1.push("I", 1);
        IWbemClassObject obj;
        obj.push("L", boost::shared_ptr<std::vector<IWbemClassObject*>>(
                          new std::vector<IWbemClassObject*>{&e0, &e1}));
        EXPECT_EQ(Encode(obj), expected);
    }
    {
        boost::shared_ptr<IWbemClassObject> shared(new IWbemClassObject);
        shared->push("I", 4);
        IWbemClassObject obj;
        obj.push("S", shared);
        EXPECT_EQ(Encode(obj), "class;S;;int;I;4;");
    }
}

TEST(EncoderTest, UnknownTypeIsTracedAndSkipped) {
    qel_test::TraceRecorder traces;
    IWbemClassObject obj;
    obj.push("D", 1.5);
    obj.push("E", boost::any());
    obj.push("A", 1);
    EXPECT_EQ(Encode(obj), "int;A;1;");
    const auto lines = traces.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].source, "enc");
    EXPECT_EQ(lines[0].level, 2);
    EXPECT_EQ(lines[0].text,
              "virtual void CSerializedMsg::IWbem2String(IWbemClassObject&, std::string&) "
              "Invalid type of boost::any : D");
}

// A codec whose nested encoding fails for objects marked "Boom".
class FailingCodec : public CSerializedMsg {
public:
    FailingCodec() : CSerializedMsg("fail") {}
    void IWbem2String(IWbemClassObject& obj, std::string& out) override {
        if (const std::string* kind = obj.GetAs<std::string>("Boom")) {
            out += "partial;";
            if (*kind == "bad") throw std::bad_exception();
            throw std::runtime_error("other");
        }
        CSerializedMsg::IWbem2String(obj, out);
    }
};

TEST(EncoderTest, FailingArrayElementIsTracedAndTheNextStillWritten) {
    qel_test::TraceRecorder traces;
    auto* bad = new IWbemClassObject;
    bad->push("Boom", std::string("bad"));
    auto* other = new IWbemClassObject;
    other->push("Boom", std::string("other"));
    auto* good = new IWbemClassObject;
    good->push("G", 1);
    IWbemClassObject obj;
    obj.push("L", std::vector<IWbemClassObject*>{bad, other, nullptr, good});
    FailingCodec codec;
    std::string out;
    codec.IWbem2String(obj, out);
    EXPECT_EQ(out, "class[];L;;partial;partial;int;G;1;");
    const std::string sig =
        "virtual void CSerializedMsg::IWbem2String(IWbemClassObject&, std::string&) ";
    EXPECT_TRUE(traces.Contains(sig + "Segmentation fault (std::bad_exception)"));
    EXPECT_TRUE(traces.Contains(sig + "Invalid parameter key=L"));
}

TEST(EncoderTest, FailureOfSingleNestedObjectReachesCaller) {
    auto* nested = new IWbemClassObject;
    nested->push("Boom", std::string("other"));
    IWbemClassObject obj;
    obj.push("N", nested);
    FailingCodec codec;
    std::string out;
    EXPECT_THROW(codec.IWbem2String(obj, out), std::runtime_error);
}

TEST(EncoderTest, NullNestedPointersAreNeverDereferenced) {
    IWbemClassObject obj;
    obj.push("N", static_cast<IWbemClassObject*>(nullptr));
    obj.push("V", static_cast<std::vector<IWbemClassObject*>*>(nullptr));
    obj.push("A", 1);
    EXPECT_EQ(Encode(obj), "int;A;1;");
}

}  // namespace

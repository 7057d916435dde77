// Property objects: the prefixed writers, lookup, and the ownership rules of trees. Live
// counts of objects and of heap blocks show ownership mistakes as numbers,
// leaked vectors included, without a leak checker.
#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include "CIWbemUtil.h"
#include "IWbemClassObject.h"
#include "framework/live_blocks.h"

namespace {

typedef std::vector<IWbemClassObject*> Objects;

class Counted : public IWbemClassObject {
  public:
    static int live;
    Counted() { ++live; }
    ~Counted() override { --live; }
};
int Counted::live = 0;

// The writers without a prefix are checked byte-exact through the encoder (codec_test).
TEST(IWbemClassObjectTest, PrefixedWritersAndLookupByName) {
    IWbemClassObject target;
    std::string out = "keep;";
    target.SetString(out, "P[0]/", "S", ";");
    target.SetInt(out, "P[0]/", "I", 3);
    target.SetBool(out, "P[0]/", "B", true);
    EXPECT_EQ(out, "keep;string;P[0]/S;%!@;int;P[0]/I;3;bool;P[0]/B;true;");
    EXPECT_TRUE(target.empty());
    target.push("B", std::string("b"));
    EXPECT_EQ(target.GetAs<int>("B"), nullptr);
    EXPECT_EQ(target.Get("Z"), nullptr);
}

TEST(IWbemClassObjectTest, TreesAndParameterListsFreeEverythingTheyHold) {
    Counted::live = 0;
    const long blocks = qel_test::LiveBlocks();
    {
        IWbemClassObject top;
        auto* child = new Counted;
        child->push("Grand", static_cast<IWbemClassObject*>(new Counted));
        top.push("One", static_cast<IWbemClassObject*>(child));
        top.push("Vec", Objects{new Counted, new Counted});
        auto* list = new Objects{new Counted};
        top.push("Ptr", list);
        list->push_back(new Counted);  // added after the push: owned too
        top.push("Again", list);       // one vector in two entries, freed once
        top.push("Shared", boost::shared_ptr<IWbemClassObject>(new Counted));
        auto* twice = new Counted;  // in two places, freed once
        top.push("A", static_cast<IWbemClassObject*>(twice));
        top.push("B", Objects{twice, nullptr});
        auto* held = new Counted;
        top.push("H", static_cast<IWbemClassObject*>(held));
        held->Release();  // gives up the pusher's claim only
        EXPECT_TRUE(held->IsHeld());
        EXPECT_EQ(Counted::live, 9);
    }
    EXPECT_EQ(Counted::live, 0);
    // A ReturnValue replacing an earlier one is checked through the relayed operations.
    EXPECT_EQ(CIWbemUtil::setReturnValueToIWbemClassObject(nullptr, 1), 0x80041008L);
    {
        IWbemClassObject obj;
        auto* list = new Objects{new Counted, new Counted};
        EXPECT_EQ(CIWbemUtil::setParameterClassArrayToIWbemClassObject(&obj, "L", list), 0);
        EXPECT_EQ(*obj.GetAs<Objects*>("L"), list);
        EXPECT_EQ(CIWbemUtil::setParameterClassArrayToIWbemClassObject(nullptr, "L",
                                                                       new Objects{new Counted}),
                  0x80041008L);
        EXPECT_EQ(Counted::live, 2);  // an orphan list is freed at once; obj holds its own
    }
    EXPECT_EQ(Counted::live, 0);
    (new Counted)->Release();  // nobody holds it: deleted
    EXPECT_EQ(Counted::live, 0);
    EXPECT_EQ(qel_test::LiveBlocks(), blocks);
}

}  // namespace

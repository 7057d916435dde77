// Property objects: writers, lookup, and the ownership rules of trees.
#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include "CIWbemUtil.h"
#include "IWbemClassObject.h"

namespace {

// Counts live instances so that ownership mistakes show as numbers; the
// sanitizer run also proves there is no leak and no double free.
class CountedObject : public IWbemClassObject {
  public:
    static int live;
    CountedObject() { ++live; }
    ~CountedObject() override { --live; }
};
int CountedObject::live = 0;

TEST(IWbemClassObjectTest, WritersAppendExactItemBytes) {
    IWbemClassObject target;
    std::string out = "keep;";
    target.SetString(out, "S", "a;b");
    target.SetInt(out, "I", -1);
    target.SetUInt(out, "U", 4000000000u);
    target.SetLong(out, "L", -9);
    target.SetULong(out, "UL", 9);
    target.SetBool(out, "B", false);
    target.SetStringArray(out, "A", {"x", "y;z"});
    target.SetClass(out, "C", target);
    target.SetClassArray(out, "CA", nullptr);
    target.SetString(out, "P[0]/", "S", ";");
    target.SetInt(out, "P[0]/", "I", 3);
    target.SetBool(out, "P[0]/", "B", true);
    EXPECT_EQ(out,
              "keep;string;S;a%!@b;int;I;-1;uint;U;4000000000;long;L;-9;ulong;UL;9;"
              "bool;B;false;string[];A;x!#y%!@z;class;C;;class[];CA;;string;P[0]/S;%!@;"
              "int;P[0]/I;3;bool;P[0]/B;true;");
    EXPECT_TRUE(target.empty());
}

TEST(IWbemClassObjectTest, IterationIsInInsertionOrderAndLookupTakesTheLast) {
    IWbemClassObject obj;
    obj.push("A", 1);
    obj.push("B", std::string("b"));
    obj.push("A", 2);
    std::vector<std::string> names;
    for (auto it = obj.getIterator(); obj.hasNext(it); ++it)
        names.push_back(it->first);
    EXPECT_EQ(names, (std::vector<std::string>{"A", "B", "A"}));
    EXPECT_EQ(*obj.GetAs<int>("A"), 2);
    EXPECT_EQ(obj.GetAs<int>("B"), nullptr);  // wrong type
    EXPECT_EQ(obj.Get("Z"), nullptr);
}

TEST(IWbemClassObjectTest, DeletingTheTopObjectFreesEveryNestedForm) {
    CountedObject::live = 0;
    {
        IWbemClassObject top;
        auto* child = new CountedObject;
        child->push("Grand", static_cast<IWbemClassObject*>(new CountedObject));
        top.push("One", static_cast<IWbemClassObject*>(child));
        top.push("Vec", std::vector<IWbemClassObject*>{new CountedObject, new CountedObject});
        auto* list = new std::vector<IWbemClassObject*>{new CountedObject};
        top.push("Ptr", list);
        list->push_back(new CountedObject);  // added after the push: owned too
        top.push("Shared", boost::shared_ptr<IWbemClassObject>(new CountedObject));
        EXPECT_EQ(CountedObject::live, 7);
    }
    EXPECT_EQ(CountedObject::live, 0);
}

TEST(IWbemClassObjectTest, ReleaseDeletesOnlyWhatNobodyHolds) {
    CountedObject::live = 0;
    auto* loose = new CountedObject;
    loose->Release();
    EXPECT_EQ(CountedObject::live, 0);
    {
        IWbemClassObject holder;
        auto* held = new CountedObject;
        holder.push("H", static_cast<IWbemClassObject*>(held));
        held->Release();  // the pusher's claim only
        EXPECT_EQ(CountedObject::live, 1);
        EXPECT_TRUE(held->IsHeld());
    }
    EXPECT_EQ(CountedObject::live, 0);
}

TEST(IWbemClassObjectTest, TheSameObjectTwiceInATreeIsFreedOnce) {
    CountedObject::live = 0;
    {
        IWbemClassObject top;
        auto* shared = new CountedObject;
        top.push("A", static_cast<IWbemClassObject*>(shared));
        top.push("B", std::vector<IWbemClassObject*>{shared, nullptr});
    }
    EXPECT_EQ(CountedObject::live, 0);
}

TEST(CIWbemUtilTest, ReturnValueReplacesTheLastOrAppends) {
    IWbemClassObject obj;
    EXPECT_EQ(CIWbemUtil::setReturnValueToIWbemClassObject(&obj, 5), 0);
    EXPECT_EQ(*obj.GetAs<long>("ReturnValue"), 5);
    EXPECT_EQ(CIWbemUtil::setReturnValueToIWbemClassObject(&obj, 0xFFFFFFFF80081001UL), 0);
    EXPECT_EQ(obj.size(), 1u);
    EXPECT_EQ(*obj.GetAs<long>("ReturnValue"), static_cast<long>(0xFFFFFFFF80081001UL));
    EXPECT_EQ(CIWbemUtil::setReturnValueToIWbemClassObject(nullptr, 1), 0x80041008L);
}

TEST(CIWbemUtilTest, ClassArrayIsTakenOver) {
    CountedObject::live = 0;
    {
        IWbemClassObject obj;
        auto* list = new std::vector<IWbemClassObject*>{new CountedObject, new CountedObject};
        EXPECT_EQ(CIWbemUtil::setParameterClassArrayToIWbemClassObject(&obj, "L", list), 0);
        EXPECT_EQ(*obj.GetAs<std::vector<IWbemClassObject*>*>("L"), list);
    }
    EXPECT_EQ(CountedObject::live, 0);
    auto* orphan = new std::vector<IWbemClassObject*>{new CountedObject};
    EXPECT_EQ(CIWbemUtil::setParameterClassArrayToIWbemClassObject(nullptr, "L", orphan),
              0x80041008L);
    EXPECT_EQ(CountedObject::live, 0);
}

}  // namespace

// The item scanners: positions, partial reads, the path rule and searches.
// Every text sits in a heap block of exactly its size, so a read past the NUL
// is a sanitizer error.
#include <gtest/gtest.h>

#include "CSerializedMsg.h"
#include "support/text_buffer.h"

namespace {

using qel_test::TextBuffer;

class ScannerTest : public ::testing::Test {
  protected:
    CSerializedMsg codec{"scan"};
    // The offset of a scanner's result in `text`, or -1 for null.
    static long At(TextBuffer& text, const char* pos) {
        return pos == nullptr ? -1 : static_cast<long>(text.offsetOf(pos));
    }
};

TEST_F(ScannerTest, GetItemReadsOneItemOrKeepsWhatItCould) {
    struct Case {
        const char* text;
        long next;  // -1: null
        const char* type;
        const char* name;
        const char* value;
    };
    const Case cases[] = {
        {"string;A;x;int;B;5;", 11, "string", "A", "x"},
        {"string;P;a%!@b;", 15, "string", "P", "a;b"},
        {"string;P;%!@%!@;", 16, "string", "P", ";;"},
        {"string;E;;", 10, "string", "E", ""},
        {"string;P;100%!;", 15, "string", "P", "100%!"},
        {"string;A;x", -1, "string", "A", "V"},  // no third ";": value untouched
        {"string;A", -1, "string", "N", "V"},
        {"string", -1, "T", "N", "V"},
        {"", -1, "T", "N", "V"},
    };
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        std::string type = "T", name = "N", value = "V";
        EXPECT_EQ(At(text, codec.getItem(text.get(), type, name, value)), c.next) << c.text;
        EXPECT_EQ(type + "|" + name + "|" + value,
                  std::string(c.type) + "|" + c.name + "|" + c.value)
            << c.text;
    }
    std::string t, n, v;
    EXPECT_EQ(codec.getItem(nullptr, t, n, v), nullptr);
}

TEST_F(ScannerTest, NumbersParseLikeStrtolTruncatedTo32Bits) {
    const std::pair<const char*, int> cases[] = {{"int;I;-12;", -12},      {"int;I;12ab;", 12},
                                                 {"int;I;;", 0},           {"int;I;x;", 0},
                                                 {"int;I;4294967297;", 1}, {"int;I; +7;", 7}};
    for (const auto& c : cases) {
        TextBuffer text(c.first);
        std::string type, name;
        int value = -1;
        ASSERT_NE(codec.getItem(text.get(), type, name, value), nullptr);
        EXPECT_EQ(value, c.second) << c.first;
    }
    TextBuffer cut("int;I;5");
    std::string type, name;
    int value = 42;
    EXPECT_EQ(codec.getItem(cut.get(), type, name, value), nullptr);
    EXPECT_EQ(value, 42);
}

TEST_F(ScannerTest, CompareItemMatchesOneItemByNameOrPath) {
    struct Case {
        const char* text;
        const char* key;
        long next;          // -1 null, 0 the position itself
        const char* value;  // after the call, starting from "old"
    };
    const Case cases[] = {
        {"string;A;x;", "A", 11, "x"},
        {"string;A;x;", "B", 0, "old"},               // never skips forward
        {"string;Name;v;", "Info[2]/Name", 14, "v"},  // path: last component
        {"string;Info[2]/Name;v;", "Info[2]/Name", 0, "old"},
        {"string;Info[2]/Name;v;", "Name", 0, "old"},
        {"string;x/Name;v;", "A/x/Name", 0, "old"},
        {"string;Name;v;", "Info[2]/", 0, "old"},
        {"string;;v;", "A", -1, "old"},  // empty name reads as nothing
        {"string;B;v", "A", 0, "old"},   // cut, other name: position kept
        {"string;A;v", "A", -1, ""},     // cut, wanted name: empty, null
        {"", "A", -1, "old"},
    };
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        std::string value = "old";
        EXPECT_EQ(At(text, codec.compareItem(text.get(), c.key, value)), c.next)
            << c.text << " " << c.key;
        EXPECT_EQ(value, c.value) << c.text << " " << c.key;
    }
    std::string value;
    EXPECT_EQ(codec.compareItem(nullptr, "A", value), nullptr);
}

TEST_F(ScannerTest, CompareItemTypedForms) {
    const std::pair<const char*, bool> flags[] = {{"bool;Flag;true;", true},
                                                  {"bool;Flag;1;", false},
                                                  {"bool;Flag;TRUE;", false},
                                                  {"bool;Other;true;", false},
                                                  {"", false}};
    for (const auto& c : flags) {
        TextBuffer text(c.first);
        bool flag = true;
        codec.compareItem(text.get(), "Flag", flag);
        EXPECT_EQ(flag, c.second) << c.first;
    }
    int number = 9;
    TextBuffer other("int;M;5;");
    EXPECT_EQ(codec.compareItem(other.get(), "N", number), other.get());
    EXPECT_EQ(number, 0);  // another name stores 0
    number = 9;
    TextBuffer empty("");
    EXPECT_EQ(codec.compareItem(empty.get(), "N", number), nullptr);
    EXPECT_EQ(number, 9);  // nothing readable leaves it
    TextBuffer match("int;N;-3;");
    EXPECT_EQ(codec.compareItem(match.get(), std::string("L[0]/"), "N", number), match.end());
    EXPECT_EQ(number, -3);

    IWbemClassObject obj;  // the object form appends even a missing field, empty
    TextBuffer named("string;N;y;");
    codec.compareItem(other.get(), "N", obj);
    codec.compareItem(named.get(), std::string("P[1]/"), "N", obj);
    codec.compareItem(empty.get(), "Q", obj);
    ASSERT_EQ(obj.size(), 2u);
    EXPECT_EQ(boost::any_cast<std::string>(obj.begin()->second), "");
    EXPECT_EQ(*obj.GetAs<std::string>("P[1]/N"), "y");
}

TEST_F(ScannerTest, ForwardSearches) {
    TextBuffer text("string;A;1;string;B;2;string;Name;3;string;A;4;");
    std::string value = "old";
    EXPECT_TRUE(codec.compareItem2(text.get(), "B", value) && value == "2");
    EXPECT_TRUE(codec.compareItem2(text.get(), "X[0]/Name", value) && value == "3");
    EXPECT_TRUE(codec.compareItem2(text.get(), "A", value) && value == "1");
    EXPECT_FALSE(codec.compareItem2(text.get(), "Z", value));
    EXPECT_FALSE(codec.compareItem2(nullptr, "A", value));

    EXPECT_EQ(At(text, codec.getParam(text.get(), "B", value)), 22);
    EXPECT_EQ(value, "2");
    EXPECT_EQ(codec.getParam(text.get(), "X[0]/Name", value), nullptr);  // exact names only
    EXPECT_EQ(value, "");
    EXPECT_EQ(codec.getParam2(text.get(), "B", value), nullptr);  // one item only
    EXPECT_EQ(At(text, codec.getParam2(text.get(), "A", value)), 11);

    TextBuffer cut("string;A;1;string;Z;2");
    value = "old";
    EXPECT_FALSE(codec.compareItem2(cut.get(), "Z", value));
    EXPECT_EQ(value, "old");
    EXPECT_EQ(codec.getParam(cut.get(), "Z", value), nullptr);
    EXPECT_EQ(codec.getParam2(cut.at(11), "Z", value), nullptr);
}

}  // namespace

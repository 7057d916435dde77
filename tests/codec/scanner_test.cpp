// The item scanners: positions, partial reads, the path rule and searches.
#include <gtest/gtest.h>

#include "CSerializedMsg.h"
#include "support/text_buffer.h"

namespace {

using qel_test::TextBuffer;

class ScannerTest : public ::testing::Test {
protected:
    CSerializedMsg codec{"scan"};
};

TEST_F(ScannerTest, GetItemWalksItemByItemToTheNul) {
    TextBuffer text("string;A;x;int;B;5;");
    std::string type, name, value;
    char* next = codec.getItem(text.get(), type, name, value);
    EXPECT_EQ(text.offsetOf(next), 11u);
    EXPECT_EQ(type, "string");
    EXPECT_EQ(name, "A");
    EXPECT_EQ(value, "x");
    int number = -1;
    next = codec.getItem(next, type, name, number);
    EXPECT_EQ(next, text.end());
    EXPECT_EQ(number, 5);
    EXPECT_EQ(codec.getItem(next, type, name, value), nullptr);
}

TEST_F(ScannerTest, GetItemOnIncompleteTextKeepsWhatItCouldRead) {
    struct Case {
        const char* text;
        const char* type;  // after the call, starting from "T"
        const char* name;  // starting from "N"
    };
    const Case cases[] = {
        {"", "T", "N"},
        {"string", "T", "N"},
        {"string;A", "string", "N"},
        {"string;A;x", "string", "A"},
    };
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        std::string type = "T", name = "N", value = "V";
        EXPECT_EQ(codec.getItem(text.get(), type, name, value), nullptr) << c.text;
        EXPECT_EQ(type, c.type) << c.text;
        EXPECT_EQ(name, c.name) << c.text;
        EXPECT_EQ(value, "V") << c.text;
        int number = 42;
        codec.getItem(text.get(), type, name, number);
        EXPECT_EQ(number, 42);
    }
    std::string t, n, v;
    EXPECT_EQ(codec.getItem(nullptr, t, n, v), nullptr);
}

TEST_F(ScannerTest, ValuesAreUnescapedAndMayBeEmpty) {
    struct Case {
        const char* text;
        const char* value;
    };
    const Case cases[] = {
        {"string;P;a%!@b;", "a;b"},   {"string;P;%!@%!@;", ";;"}, {"string;E;;", ""},
        {"string;P;100%!;", "100%!"}, {"string;P;%!", nullptr},  {"string;P;%;", "%"},
    };
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        std::string type, name, value = "old";
        char* next = codec.getItem(text.get(), type, name, value);
        if (c.value == nullptr) {
            EXPECT_EQ(next, nullptr);
        } else {
            EXPECT_EQ(next, text.end()) << c.text;
            EXPECT_EQ(value, c.value) << c.text;
        }
    }
}

TEST_F(ScannerTest, GetItemNumbersParseLikeStrtolTruncatedTo32Bits) {
    struct Case {
        const char* text;
        int value;
    };
    const Case cases[] = {{"int;I;-12;", -12}, {"int;I;12ab;", 12},       {"int;I;;", 0},
                          {"int;I;x;", 0},     {"int;I;4294967297;", 1}, {"int;I; +7;", 7}};
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        std::string type, name;
        int value = -1;
        ASSERT_NE(codec.getItem(text.get(), type, name, value), nullptr);
        EXPECT_EQ(value, c.value) << c.text;
    }
}

TEST_F(ScannerTest, CompareItemReadsExactlyOneItem) {
    TextBuffer text("string;A;x;string;B;y;");
    std::string value = "old";
    EXPECT_EQ(codec.compareItem(text.get(), "B", value), text.get());
    EXPECT_EQ(value, "old");
    char* next = codec.compareItem(text.get(), "A", value);
    EXPECT_EQ(text.offsetOf(next), 11u);
    EXPECT_EQ(value, "x");
    EXPECT_EQ(codec.compareItem(next, "B", value), text.end());
    EXPECT_EQ(value, "y");
    EXPECT_EQ(codec.compareItem(text.end(), "B", value), nullptr);
    EXPECT_EQ(codec.compareItem(nullptr, "B", value), nullptr);
    EXPECT_EQ(value, "y");
}

TEST_F(ScannerTest, CompareItemPathRuleMatchesTheLastComponent) {
    struct Case {
        const char* text;
        const char* key;
        bool matches;
    };
    const Case cases[] = {
        {"string;Name;v;", "Info[2]/Name", true},
        {"string;Info[2]/Name;v;", "Info[2]/Name", false},
        {"string;Name;v;", "Name", true},
        {"string;Info[2]/Name;v;", "Name", false},
        {"string;x/Name;v;", "A/x/Name", false},
        {"string;Nam;v;", "Info[2]/Name", false},
        {"string;Name;v;", "Info[2]/", false},
    };
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        std::string value;
        char* next = codec.compareItem(text.get(), c.key, value);
        EXPECT_EQ(next == text.end(), c.matches) << c.text << " " << c.key;
    }
    TextBuffer text("string;Name;v;");
    std::string value;
    EXPECT_EQ(codec.compareItem(text.get(), std::string("Info[0]/"), "Name", value), text.end());
    EXPECT_EQ(value, "v");
}

TEST_F(ScannerTest, CompareItemOnUnreadableOrTruncatedItems) {
    std::string value = "old";
    {
        TextBuffer text("string;;v;");  // an empty name reads as nothing
        EXPECT_EQ(codec.compareItem(text.get(), "A", value), nullptr);
    }
    {
        TextBuffer text("string;B;v");  // another name: position kept
        EXPECT_EQ(codec.compareItem(text.get(), "A", value), text.get());
        EXPECT_EQ(value, "old");
    }
    {
        TextBuffer text("string;A;v");  // the wanted name, value never closed
        EXPECT_EQ(codec.compareItem(text.get(), "A", value), nullptr);
        EXPECT_EQ(value, "");
    }
}

TEST_F(ScannerTest, CompareItemBoolForm) {
    struct Case {
        const char* text;
        bool value;
        bool consumed;
    };
    const Case cases[] = {{"bool;Flag;true;", true, true},
                          {"bool;Flag;1;", false, true},
                          {"bool;Flag;TRUE;", false, true},
                          {"bool;Other;true;", false, false},
                          {"", false, false}};
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        bool flag = true;
        char* next = codec.compareItem(text.get(), "Flag", flag);
        EXPECT_EQ(flag, c.value) << c.text;
        EXPECT_EQ(next == text.end() && *c.text != '\0', c.consumed) << c.text;
    }
}

TEST_F(ScannerTest, CompareItemIntForm) {
    int number = 9;
    TextBuffer other("int;M;5;");
    EXPECT_EQ(codec.compareItem(other.get(), "N", number), other.get());
    EXPECT_EQ(number, 0);  // another name still stores 0
    number = 9;
    TextBuffer empty("");
    EXPECT_EQ(codec.compareItem(empty.get(), "N", number), nullptr);
    EXPECT_EQ(number, 9);  // nothing readable leaves it
    TextBuffer match("int;N;-3;");
    EXPECT_EQ(codec.compareItem(match.get(), "N", number), match.end());
    EXPECT_EQ(number, -3);
    EXPECT_EQ(codec.compareItem(match.get(), std::string("L[0]/"), "N", number), match.end());
}

TEST_F(ScannerTest, CompareItemObjectFormAppendsEvenWhenMissing) {
    IWbemClassObject obj;
    TextBuffer other("string;M;x;");
    EXPECT_EQ(codec.compareItem(other.get(), "N", obj), other.get());
    TextBuffer match("string;N;y;");
    EXPECT_EQ(codec.compareItem(match.get(), std::string("P[1]/"), "N", obj), match.end());
    TextBuffer empty("");
    EXPECT_EQ(codec.compareItem(empty.get(), "Q", obj), nullptr);
    ASSERT_EQ(obj.size(), 2u);
    auto it = obj.begin();
    EXPECT_EQ(it->first, "N");
    EXPECT_EQ(boost::any_cast<std::string>(it->second), "");
    ++it;
    EXPECT_EQ(it->first, "P[1]/N");
    EXPECT_EQ(boost::any_cast<std::string>(it->second), "y");
}

TEST_F(ScannerTest, CompareItem2SearchesForwardWithThePathRule) {
    TextBuffer text("string;A;1;string;B;2;string;Name;3;string;A;4;");
    std::string value = "old";
    EXPECT_TRUE(codec.compareItem2(text.get(), "B", value));
    EXPECT_EQ(value, "2");
    EXPECT_TRUE(codec.compareItem2(text.get(), "X[0]/Name", value));
    EXPECT_EQ(value, "3");
    EXPECT_TRUE(codec.compareItem2(text.get(), "A", value));
    EXPECT_EQ(value, "1");
    value = "old";
    EXPECT_FALSE(codec.compareItem2(text.get(), "Z", value));
    EXPECT_FALSE(codec.compareItem2(nullptr, "A", value));
    TextBuffer truncated("string;A;1;string;Z;2");
    EXPECT_FALSE(codec.compareItem2(truncated.get(), "Z", value));
    EXPECT_EQ(value, "old");
}

TEST_F(ScannerTest, GetParamSkipsForwardGetParam2DoesNot) {
    TextBuffer text("string;A;1;string;B;2;string;C;3;");
    std::string value;
    char* next = codec.getParam(text.get(), "B", value);
    EXPECT_EQ(value, "2");
    EXPECT_EQ(text.offsetOf(next), 22u);
    EXPECT_EQ(codec.getParam(text.get(), "Z", value), nullptr);
    EXPECT_EQ(value, "");
    value = "x";
    EXPECT_EQ(codec.getParam(text.get(), "P/B", value), nullptr);  // exact names only
    EXPECT_EQ(value, "");
    EXPECT_EQ(codec.getParam(nullptr, "A", value), nullptr);

    value = "x";
    EXPECT_EQ(codec.getParam2(text.get(), "B", value), nullptr);
    EXPECT_EQ(value, "");
    EXPECT_EQ(text.offsetOf(codec.getParam2(text.get(), "A", value)), 11u);
    EXPECT_EQ(value, "1");
    TextBuffer truncated("string;A;1");
    value = "x";
    EXPECT_EQ(codec.getParam2(truncated.get(), "A", value), nullptr);
    EXPECT_EQ(value, "");
}

}  // namespace

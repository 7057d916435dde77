// The item scanners: positions, partial reads, the path rule and searches.
// Every text sits in a heap block of exactly its size, so a read past the NUL
// is a sanitizer error.
#include <gtest/gtest.h>

#include "CSerializedMsg.h"
#include "support/text_buffer.h"

namespace {

using qel_test::TextBuffer;
typedef std::pair<const char*, const char*> Case;

class ScannerTest : public ::testing::Test {
  protected:
    CSerializedMsg codec{"scan"};
    // The offset of a scanner's result in `text` as text, "-1" for null.
    static std::string At(TextBuffer& text, const char* pos) {
        return std::to_string(pos == nullptr ? -1 : static_cast<long>(text.offsetOf(pos)));
    }
};

TEST_F(ScannerTest, GetItemReadsOneItemAsTextOrNumberOrKeepsWhatItCould) {
    // Expected: the next offset, then type|name|value starting from T|N|V, then
    // the number form's value starting from 42: strtol's, truncated to 32 bits.
    // clang-format off
    const Case cases[] = {
        {"string;A;x;int;B;5;", "11 string|A|x 0"}, {"string;P;a%!@b;", "15 string|P|a;b 0"},
        {"string;P;%!@%!@;", "16 string|P|;; 0"}, {"string;E;;", "10 string|E| 0"},
        {"string;P;100%!;", "15 string|P|100%! 100"}, {"int;I;-12;", "10 int|I|-12 -12"},
        {"int;I;12ab;", "11 int|I|12ab 12"}, {"int;I;4294967297;", "17 int|I|4294967297 1"},
        {"int;I; +7;", "10 int|I| +7 7"}, {"string;A;x", "-1 string|A|V 42"},
        {"string;A", "-1 string|N|V 42"}, {"string", "-1 T|N|V 42"}, {"", "-1 T|N|V 42"}};
    // clang-format on
    for (const Case& c : cases) {
        TextBuffer text(c.first);
        std::string type = "T", name = "N", value = "V", numberType = "T", numberName = "N";
        int number = 42;
        const std::string next = At(text, codec.getItem(text.get(), type, name, value));
        // The number form stops at the same place and keeps the same type and name.
        EXPECT_EQ(At(text, codec.getItem(text.get(), numberType, numberName, number)) + numberType +
                      numberName,
                  next + type + name);
        EXPECT_EQ(next + " " + type + "|" + name + "|" + value + " " + std::to_string(number),
                  c.second)
            << c.first;
    }
    std::string t, n, v;
    EXPECT_EQ(codec.getItem(nullptr, t, n, v), nullptr);
}

TEST_F(ScannerTest, CompareItemMatchesOneItemByNameOrPath) {
    // Expected: key, next offset (0: the position itself), value starting from "old".
    // clang-format off
    const Case cases[] = {
        {"string;A;x;", "A 11 x"}, {"string;A;x;", "B 0 old"},
        {"string;Name;v;", "Info[2]/Name 14 v"}, {"string;Info[2]/Name;v;", "Info[2]/Name 0 old"},
        {"string;Info[2]/Name;v;", "Name 0 old"}, {"string;x/Name;v;", "A/x/Name 0 old"},
        {"string;Name;v;", "Info[2]/ 0 old"}, {"string;;v;", "A -1 old"}, {"string;B;v", "A 0 old"},
        {"string;A;v", "A -1 "}, {"", "A -1 old"}};
    // clang-format on
    for (const Case& c : cases) {
        TextBuffer text(c.first);
        const std::string key = std::string(c.second).substr(0, std::string(c.second).find(' '));
        std::string value = "old";
        const std::string next = At(text, codec.compareItem(text.get(), key.c_str(), value));
        EXPECT_EQ(key + " " + next + " " + value, c.second) << c.first;
    }
    std::string value;
    EXPECT_EQ(codec.compareItem(nullptr, "A", value), nullptr);
    // The typed forms.
    // clang-format off
    const std::pair<const char*, bool> flags[] = {
        {"bool;Flag;true;", true}, {"bool;Flag;1;", false}, {"bool;Flag;TRUE;", false},
        {"bool;Other;true;", false}, {"", false}};
    // clang-format on
    for (const auto& c : flags) {
        TextBuffer text(c.first);
        bool flag = true;
        codec.compareItem(text.get(), "Flag", flag);
        EXPECT_EQ(flag, c.second) << c.first;
    }
    int number = 9;
    TextBuffer other("int;M;5;"), empty(""), match("int;N;-3;"), named("string;N;y;");
    EXPECT_EQ(codec.compareItem(other.get(), "N", number), other.get());
    EXPECT_EQ(number, 0);  // another name stores 0
    number = 9;
    EXPECT_EQ(codec.compareItem(empty.get(), "N", number), nullptr);
    EXPECT_EQ(number, 9);  // nothing readable leaves it
    EXPECT_EQ(codec.compareItem(match.get(), std::string("L[0]/"), "N", number), match.end());
    EXPECT_EQ(number, -3);
    IWbemClassObject obj;  // the object form appends even a missing field, empty
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
    EXPECT_FALSE(codec.compareItem2(text.get(), "Z", value) ||
                 codec.compareItem2(nullptr, "A", value));
    EXPECT_EQ(At(text, codec.getParam(text.get(), "B", value)) + value, "222");
    EXPECT_EQ(codec.getParam(text.get(), "X[0]/Name", value), nullptr);  // exact names only
    EXPECT_EQ(value, "");
    EXPECT_EQ(codec.getParam2(text.get(), "B", value), nullptr);  // one item only
    EXPECT_EQ(At(text, codec.getParam2(text.get(), "A", value)), "11");
    TextBuffer cut("string;A;1;string;Z;2");
    value = "old";
    EXPECT_FALSE(codec.compareItem2(cut.get(), "Z", value));
    EXPECT_EQ(value, "old");
    EXPECT_EQ(codec.getParam(cut.get(), "Z", value), nullptr);
    EXPECT_EQ(codec.getParam2(cut.at(11), "Z", value), nullptr);
}

}  // namespace

// Array paths, string-array readers and single items.
#include <gtest/gtest.h>

#include <tuple>

#include "CSerializedMsg.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;
typedef std::vector<std::string> Strings;

TEST(ArraysTest, StringArraysWholeBodiesAndFirstItems) {
    CSerializedMsg codec("arr");
    EXPECT_EQ(codec.getClassArrayName("ToolInfo", 12), "ToolInfo[12]/");
    EXPECT_EQ(codec.getClassArrayName("A", -3), "A[-3]/");
    // clang-format off
    const std::pair<const char*, Strings> cases[] = {{"a!#b", {"a", "b"}}, {"a", {"a"}}, {"", {}},
        {"a!#", {"a", ""}}, {"x%!@y", {"x;y"}}, {"!#!#", {"", "", ""}}};
    // clang-format on
    for (const auto& c : cases) {
        TextBuffer text(std::string("string[];Paths;") + c.first + ";");
        Strings values{"kept"};
        EXPECT_EQ(codec.setStringArray(text.get(), "Info[0]/", "Paths", values), text.end());
        Strings expected{"kept"};
        expected.insert(expected.end(), c.second.begin(), c.second.end());
        EXPECT_EQ(values, expected) << c.first;
    }
    TextBuffer other("string[];Other;a;");
    Strings values{"old"};
    EXPECT_EQ(codec.setStringArray(other.get(), "", "Paths", values), other.get());
    EXPECT_TRUE(values.empty());
    TextBuffer cut("string[];Paths;a!#b");
    values = {"old"};
    EXPECT_EQ(codec.setStringArray(cut.get(), "", "Paths", values), nullptr);
    EXPECT_EQ(values, Strings{"old"});
    // Whole-body readers.
    // clang-format off
    const std::pair<const char*, Strings> runs[] = {
        {"string[];A;x!#y;string[];B;z;string;C;w;string[];D;q;", {"x", "y", "z"}},
        {"string[];A;;", {""}}, {"string[];A;a!#;", {"a", ""}}, {"string;A;x;string[];B;y;", {}},
        {"string[];A;a%!@b!#c%!@d;", {"a;b", "c"}}, {"string[];A;x;string[];B;y", {"x"}}};
    // clang-format on
    for (const auto& c : runs) {
        TextBuffer text(c.first);
        Strings values;
        codec.StringArray2Array(text.get(), values);
        EXPECT_EQ(values, c.second) << c.first;
    }
    TextBuffer all("long;R;2;string;S;x%!@y;class;N;;bool;B;1");
    values = {"first"};
    codec.String2Array(all.get(), values);
    EXPECT_EQ(values, (Strings{"first", "2", "x;y", ""}));

    qel_test::TraceRecorder traces;
    codec.StringArray2Array(nullptr, values);
    codec.String2Array(nullptr, values);
    const std::string vec =
        "std::vector<std::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
        "std::allocator<std::basic_string<char, std::char_traits<char>, std::allocator<char> > > "
        ">&)";
    const std::string null = vec + " parameter is NULL", head = "virtual void CSerializedMsg::";
    EXPECT_EQ(traces.Texts(), (Strings{head + "StringArray2Array(char*, " + null,
                                       head + "String2Array(char*, " + null}));
    EXPECT_EQ(traces.Lines()[0].source, "som");
    // The first item as text or flag.
    // clang-format off
    const std::tuple<const char*, const char*, bool> firsts[] = {
        {"string;AppKey;k%!@1;", "k;1", false}, {"bool;Rollback;1;", "1", true}, {"", "", false},
        {"bool;Rollback;true;", "true", false}, {"bool;Rollback;1", "", false},
        {"bool;Rollback;10;", "10", false}};
    // clang-format on
    for (const auto& c : firsts) {
        EXPECT_EQ(codec.getString(std::get<0>(c)), std::get<1>(c)) << std::get<0>(c);
        EXPECT_EQ(codec.getBool(std::get<0>(c)), std::get<2>(c)) << std::get<0>(c);
    }
    EXPECT_EQ(codec.getString(nullptr), "");
    EXPECT_FALSE(codec.getBool(nullptr));
}

}  // namespace

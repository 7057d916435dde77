// Array paths, string-array readers and single items.
#include <gtest/gtest.h>

#include "CSerializedMsg.h"
#include "support/text_buffer.h"
#include "support/trace_recorder.h"

namespace {

using qel_test::TextBuffer;
typedef std::vector<std::string> Strings;

class ArraysTest : public ::testing::Test {
protected:
    CSerializedMsg codec{"arr"};
};

TEST_F(ArraysTest, ClassArrayNames) {
    EXPECT_EQ(codec.getClassArrayName("ToolInfo", 12), "ToolInfo[12]/");
    EXPECT_EQ(codec.getClassArrayName("A", 0), "A[0]/");
    EXPECT_EQ(codec.getClassArrayName("A", -3), "A[-3]/");
}

TEST_F(ArraysTest, SetStringArraySplitsAndAppends) {
    struct Case {
        const char* value;
        Strings appended;
    };
    const Case cases[] = {{"a!#b", {"a", "b"}}, {"a", {"a"}},         {"", {}},
                          {"a!#", {"a", ""}},   {"x%!@y", {"x;y"}},  {"!#!#", {"", "", ""}}};
    for (const Case& c : cases) {
        TextBuffer text(std::string("string[];Paths;") + c.value + ";");
        Strings values{"kept"};
        char* next = codec.setStringArray(text.get(), "Info[0]/", "Paths", values);
        EXPECT_EQ(next, text.end()) << c.value;
        Strings expected{"kept"};
        expected.insert(expected.end(), c.appended.begin(), c.appended.end());
        EXPECT_EQ(values, expected) << c.value;
    }
}

TEST_F(ArraysTest, SetStringArrayOnAnotherItemEmptiesTheVector) {
    TextBuffer text("string[];Other;a;");
    Strings values{"old"};
    EXPECT_EQ(codec.setStringArray(text.get(), "", "Paths", values), text.get());
    EXPECT_TRUE(values.empty());
    TextBuffer truncated("string[];Paths;a!#b");
    values = {"old"};
    EXPECT_EQ(codec.setStringArray(truncated.get(), "", "Paths", values), nullptr);
    EXPECT_EQ(values, Strings{"old"});
}

TEST_F(ArraysTest, StringArray2ArrayReadsTheLeadingRunOnly) {
    struct Case {
        const char* text;
        Strings values;
    };
    const Case cases[] = {
        {"string[];A;x!#y;string[];B;z;string;C;w;string[];D;q;", {"x", "y", "z"}},
        {"string[];A;;", {""}},
        {"string[];A;a!#;", {"a", ""}},
        {"string[];A;a%!@b!#c%!@d;", {"a;b", "c"}},
        {"string;A;x;string[];B;y;", {}},
        {"string[];A;x;string[];B;y", {"x"}},
        {"", {}},
    };
    for (const Case& c : cases) {
        TextBuffer text(c.text);
        Strings values;
        codec.StringArray2Array(text.get(), values);
        EXPECT_EQ(values, c.values) << c.text;
    }
}

TEST_F(ArraysTest, String2ArrayCollectsEveryValue) {
    TextBuffer text("long;R;2;string;S;x%!@y;class;N;;bool;B;1");
    Strings values{"first"};
    codec.String2Array(text.get(), values);
    EXPECT_EQ(values, (Strings{"first", "2", "x;y", ""}));
}

TEST_F(ArraysTest, NullBodiesAreTraced) {
    qel_test::TraceRecorder traces;
    Strings values;
    codec.StringArray2Array(nullptr, values);
    codec.String2Array(nullptr, values);
    EXPECT_TRUE(values.empty());
    const auto lines = traces.Lines();
    ASSERT_EQ(lines.size(), 2u);
    const std::string vectorType =
        "std::vector<std::basic_string<char, std::char_traits<char>, std::allocator<char> >, "
        "std::allocator<std::basic_string<char, std::char_traits<char>, std::allocator<char> > > "
        ">&)";
    EXPECT_EQ(lines[0].text, "virtual void CSerializedMsg::StringArray2Array(char*, " + vectorType +
                                 " parameter is NULL");
    EXPECT_EQ(lines[1].text,
              "virtual void CSerializedMsg::String2Array(char*, " + vectorType +
                  " parameter is NULL");
    EXPECT_EQ(lines[0].source, "som");
}

TEST_F(ArraysTest, GetStringAndGetBoolReadTheFirstItem) {
    struct Case {
        const char* text;
        const char* string;
        bool flag;
    };
    const Case cases[] = {
        {"string;AppKey;k%!@1;", "k;1", false},
        {"bool;Rollback;1;", "1", true},
        {"bool;Rollback;true;", "true", false},
        {"bool;Rollback;1", "", false},
        {"bool;Rollback;10;", "10", false},
        {"", "", false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(codec.getString(c.text), c.string) << c.text;
        EXPECT_EQ(codec.getBool(c.text), c.flag) << c.text;
    }
    EXPECT_EQ(codec.getString(nullptr), "");
    EXPECT_FALSE(codec.getBool(nullptr));
}

}  // namespace

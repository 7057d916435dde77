// The trace facility: sink, file output, level mask, threads.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "CTraceUtility.h"
#include "support/temp_sysroot.h"
#include "support/trace_recorder.h"

namespace {

std::string ReadAll(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Points QEL_TRACE at a file for one test and restores the quiet default.
class TraceFile {
  public:
    TraceFile(const qel_test::TempSysroot& root, const char* levels)
        : path_(root.root() + "/trace.log") {
        setenv("QEL_TRACE", path_.c_str(), 1);
        if (levels != nullptr)
            setenv("QEL_TRACE_LEVEL", levels, 1);
        CTraceUtility::Initialize("test", 0xFFFFFFFFu);
    }
    ~TraceFile() {
        unsetenv("QEL_TRACE");
        unsetenv("QEL_TRACE_LEVEL");
        CTraceUtility::Initialize("test", 0xFFFFFFFFu);
    }
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

TEST(TraceUtilityTest, SinkGetsEveryLineFormatted) {
    qel_test::TraceRecorder traces;
    CTraceUtility::WriteDebug("src", 2, "%s=%d", "x", 5);
    CTraceUtility::WriteDebug("src", 64, "plain");
    const auto lines = traces.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].source, "src");
    EXPECT_EQ(lines[0].level, 2);
    EXPECT_EQ(lines[0].text, "x=5");
    EXPECT_EQ(lines[1].text, "plain");
}

TEST(TraceUtilityTest, FileLinesCarrySourceLevelAndTextWithMode0600) {
    qel_test::TempSysroot root;
    TraceFile file(root, "0x6");
    CTraceUtility::WriteDebug("alpha", 4, "entry %s", "one");
    CTraceUtility::WriteDebug("alpha", 1, "filtered out");
    CTraceUtility::WriteDebug("beta", 2, "error");
    const std::string text = ReadAll(file.path());
    EXPECT_NE(text.find(" alpha L4 entry one\n"), std::string::npos);
    EXPECT_NE(text.find(" beta L2 error\n"), std::string::npos);
    EXPECT_EQ(text.find("filtered out"), std::string::npos);
    struct stat info;
    ASSERT_EQ(stat(file.path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST(TraceUtilityTest, NothingIsWrittenWhenOff) {
    qel_test::TempSysroot root;
    unsetenv("QEL_TRACE");
    CTraceUtility::Initialize("test", 0xFFFFFFFFu);
    EXPECT_FALSE(CTraceUtility::IsEnabled(4));
    CTraceUtility::WriteDebug("src", 4, "%s", "dropped");
    EXPECT_FALSE(std::ifstream(root.root() + "/trace.log").good());
}

TEST(TraceUtilityTest, LinesFromManyThreadsNeverInterleave) {
    qel_test::TempSysroot root;
    TraceFile file(root, nullptr);
    const std::string payload(300, 'p');
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                CTraceUtility::WriteDebug("thread", 4, "%d:%s:end", t, payload.c_str());
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    std::istringstream lines(ReadAll(file.path()));
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        ++count;
        ASSERT_NE(line.find(" thread L4 "), std::string::npos) << line;
        ASSERT_EQ(line.substr(line.size() - 4), ":end") << line;
        ASSERT_NE(line.find(payload), std::string::npos) << line;
    }
    EXPECT_EQ(count, 8 * 200);
}

}  // namespace

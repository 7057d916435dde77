// Fixture files of the tests (tests/data).
#ifndef QEL_TESTS_SUPPORT_TEST_DATA_H
#define QEL_TESTS_SUPPORT_TEST_DATA_H

#include <fstream>
#include <sstream>
#include <string>

namespace qel_test {

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

inline std::string TestData(const std::string& name) {
    return ReadFile(std::string(QEL_SOURCE_DIR) + "/tests/data/" + name);
}

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_TEST_DATA_H

// A NUL-terminated copy of a text in a heap block of exactly its size, so
// that AddressSanitizer reports any read past the terminating NUL.
#ifndef QEL_TESTS_SUPPORT_TEXT_BUFFER_H
#define QEL_TESTS_SUPPORT_TEXT_BUFFER_H

#include <cstring>
#include <memory>
#include <string>

namespace qel_test {

class TextBuffer {
  public:
    explicit TextBuffer(const std::string& text) : data_(new char[text.size() + 1]) {
        std::memcpy(data_.get(), text.c_str(), text.size() + 1);
        size_ = text.size();
    }
    char* get() { return data_.get(); }
    char* at(std::size_t offset) { return data_.get() + offset; }
    char* end() { return data_.get() + size_; }
    std::size_t offsetOf(const char* pos) const {
        return static_cast<std::size_t>(pos - data_.get());
    }

  private:
    std::unique_ptr<char[]> data_;
    std::size_t size_;
};

}  // namespace qel_test

#endif  // QEL_TESTS_SUPPORT_TEXT_BUFFER_H

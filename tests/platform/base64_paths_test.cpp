// Every way to write base64 that this processor has, held equal to the portable one, between pages that must not be
// touched.
#include "platform/base64_paths.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <random>

#include "platform/base64.h"

namespace quillcast::platform::base64 {
namespace {

// Memory that ends where its page ends; the page behind it faults.
class GuardedMemory {
 public:
  explicit GuardedMemory(std::size_t size)
      : page_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))),
        size_((size / page_ + 1) * page_),
        start_(static_cast<char*>(
            ::mmap(nullptr, size_ + page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    ::mprotect(start_ + size_, page_, PROT_NONE);
  }
  ~GuardedMemory() { ::munmap(start_, size_ + page_); }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  char* Last(std::size_t bytes) const { return start_ + size_ - bytes; }

 private:
  std::size_t page_;
  std::size_t size_;
  char* start_;
};

constexpr std::size_t kLongest = 600;

TEST(Base64Paths, AgreeOnEveryLengthAndStayInsideTheirMemory) {
  std::mt19937 random(7);
  const GuardedMemory in(kLongest);
  const GuardedMemory out(2 * kLongest);
  ASSERT_EQ(Paths().front().name, "portable");
  for (std::size_t size = 0; size <= kLongest; ++size) {
    char* const from = in.Last(size);
    for (std::size_t i = 0; i < size; ++i) from[i] = static_cast<char>(random());
    std::string expected(EncodedSize(size), '?');
    EncodePortably(expected.data(), from, size);
    for (const Path& path : Paths()) {
      char* const to = out.Last(expected.size());
      to[-1] = '!';
      path.encode(to, from, size);
      ASSERT_EQ(std::string_view(to - 1, expected.size() + 1), '!' + expected) << path.name << ", " << size << " bytes";
    }
  }
}

TEST(Base64Paths, AgreeOnLinesAndStayInsideTheirMemory) {
  std::mt19937 random(8);
  const GuardedMemory in(10 * kLineBytes);
  const GuardedMemory out(10 * kLineSize);
  for (std::size_t lines = 0; lines <= 10; ++lines) {
    char* const from = in.Last(lines * kLineBytes);
    for (std::size_t i = 0; i < lines * kLineBytes; ++i) from[i] = static_cast<char>(random());
    std::string expected;
    for (std::size_t line = 0; line < lines; ++line) {
      AppendBase64(expected, {from + line * kLineBytes, kLineBytes});
      expected += "\r\n";
    }
    for (const Path& path : Paths()) {
      char* const to = out.Last(expected.size());
      to[-1] = '!';
      path.encode_lines(to, from, lines);
      ASSERT_EQ(std::string_view(to - 1, expected.size() + 1), '!' + expected) << path.name << ", " << lines;
    }
  }
}

}  // namespace
}  // namespace quillcast::platform::base64

// Text that is wiped from memory when it goes: passwords and what is made of them.
#pragma once

#include <string.h>  // NOLINT(modernize-deprecated-headers): explicit_bzero is the system's alone

#include <string>
#include <string_view>
#include <utility>

namespace quillcast::platform {

// All of it, whatever its size says: a short text lives inside its string, and moving or swapping it leaves it there.
inline void Wipe(std::string& text) {
  text.resize(text.capacity());
  text.resize(text.capacity());  // what was longer once may still lie behind the end
  ::explicit_bzero(text.data(), text.size());
  text.clear();
}

// Moving swaps, so that nothing stays behind in what was moved from. There is no way to add to one: memory that a
// growing text left would not be wiped.
class Secret {
 public:
  Secret() = default;
  explicit Secret(std::string_view text) : text_(text) {}
  explicit Secret(const char* text) : text_(text) {}
  // The caller's string is wiped.
  explicit Secret(std::string&& text) {
    text_.swap(text);
    Wipe(text);
  }
  Secret(const Secret& other) = default;
  Secret(Secret&& other) noexcept { text_.swap(other.text_); }
  Secret& operator=(Secret&& other) noexcept {
    text_.swap(other.text_);
    return *this;
  }
  Secret& operator=(const Secret& other) { return *this = Secret(other); }
  ~Secret() { Wipe(text_); }

  // A copy made of it is no longer looked after.
  std::string_view view() const { return text_; }
  bool empty() const { return text_.empty(); }

 private:
  std::string text_;
};

}  // namespace quillcast::platform

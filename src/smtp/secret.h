// Text that is wiped from memory when it goes: passwords and what is made of them.
#pragma once

#include <openssl/crypto.h>

#include <string>
#include <string_view>
#include <utility>

namespace quillcast::smtp {

inline void Wipe(std::string& text) {
  OPENSSL_cleanse(text.data(), text.size());
  text.clear();
}

class Secret {
 public:
  Secret() = default;
  explicit Secret(std::string_view text) : text_(text) {}
  explicit Secret(std::string&& text) : text_(std::move(text)) {}
  // Swapped, not moved: a short text lives inside its string, and a move would leave it there.
  Secret(Secret&& other) noexcept { text_.swap(other.text_); }
  Secret& operator=(Secret&& other) noexcept {
    text_.swap(other.text_);
    return *this;
  }
  ~Secret() { Wipe(text_); }

  std::string_view view() const { return text_; }

 private:
  std::string text_;
};

}  // namespace quillcast::smtp

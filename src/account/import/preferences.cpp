#include "account/import/preferences.h"

#include <algorithm>
#include <array>
#include <optional>

#include "account/import/key_file.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::account {
namespace {

// Goes through one statement.
class Statement {
 public:
  explicit Statement(std::string_view text) : text_(text) {}

  void SkipBlanks() {
    while (!text_.empty() && (text_.front() == ' ' || text_.front() == '\t')) text_.remove_prefix(1);
  }
  bool Take(char expected) {
    SkipBlanks();
    if (!text_.starts_with(expected)) return false;
    text_.remove_prefix(1);
    return true;
  }
  std::optional<std::string> Quoted();
  // A number, true or false.
  std::optional<std::string> Word();
  bool starts_with_quote() const { return text_.starts_with('"') || text_.starts_with('\''); }

 private:
  bool Escape(std::string& out);
  std::optional<char32_t> Hexadecimal(std::size_t digits);

  std::string_view text_;
};

std::optional<char32_t> Statement::Hexadecimal(std::size_t digits) {
  if (text_.size() < digits) return std::nullopt;
  char32_t number = 0;
  for (const char c : text_.substr(0, digits)) {
    const char digit = platform::AsciiLower(c);
    const bool is_letter = digit >= 'a' && digit <= 'f';
    if (!is_letter && (digit < '0' || digit > '9')) return std::nullopt;
    number = number * 16 + static_cast<char32_t>(is_letter ? digit - 'a' + 10 : digit - '0');
  }
  text_.remove_prefix(digits);
  return number;
}

// What follows a backslash.
bool Statement::Escape(std::string& out) {
  if (text_.empty()) return false;
  const char kind = text_.front();
  text_.remove_prefix(1);
  if (kind == 'n' || kind == 'r') {
    out += kind == 'n' ? '\n' : '\r';
    return true;
  }
  if (kind != 'x' && kind != 'u') {
    out += kind;
    return true;
  }
  auto code = Hexadecimal(kind == 'x' ? 2 : 4);
  if (!code) return false;
  const auto is_surrogate = [](char32_t c, char32_t first) { return c >= first && c < first + 0x400; };
  if (is_surrogate(*code, 0xD800) && text_.starts_with("\\u")) {
    text_.remove_prefix(2);
    const auto second = Hexadecimal(4);
    if (!second || !is_surrogate(*second, 0xDC00)) return false;
    code = 0x10000 + ((*code - 0xD800) << 10U) + (*second - 0xDC00);
  }
  if (is_surrogate(*code, 0xD800) || is_surrogate(*code, 0xDC00)) return false;
  platform::AppendUtf8(out, *code);
  return true;
}

std::optional<std::string> Statement::Quoted() {
  SkipBlanks();
  if (!starts_with_quote()) return std::nullopt;
  const char quote = text_.front();
  text_.remove_prefix(1);
  std::string out;
  while (!text_.empty()) {
    const char c = text_.front();
    text_.remove_prefix(1);
    if (c == quote) return out;
    if (c != '\\') {
      out += c;
    } else if (!Escape(out)) {
      return std::nullopt;
    }
  }
  return std::nullopt;
}

std::optional<std::string> Statement::Word() {
  const std::size_t end = text_.find(')');
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view word = platform::Trim(text_.substr(0, end));
  if (word != "true" && word != "false" && !platform::ParseWholeNumber(word.substr(word.starts_with('-') ? 1 : 0)))
    return std::nullopt;
  text_.remove_prefix(end);
  return std::string(word);
}

constexpr std::array<std::string_view, 3> kBeginnings = {"user_pref", "sticky_pref", "pref"};

}  // namespace

bool ReadPreferences(std::string_view file, std::string_view prefix, Preferences& preferences) {
  // In no text of this kind; and a zero is what other encodings have between letters.
  bool is_whole = file.find('\0') == std::string_view::npos;
  if (file.starts_with(kUtf8Mark)) file.remove_prefix(kUtf8Mark.size());
  while (!file.empty()) {
    const std::size_t end = file.find('\n');
    std::string_view line = platform::Trim(file.substr(0, end));
    file.remove_prefix(end == std::string_view::npos ? file.size() : end + 1);
    const auto* const beginning =
        std::find_if(kBeginnings.begin(), kBeginnings.end(), [&](auto name) { return line.starts_with(name); });
    if (beginning == kBeginnings.end()) continue;
    Statement statement(line.substr(beginning->size()));
    if (!statement.Take('(')) continue;
    auto name = statement.Quoted();
    if (name && !name->starts_with(prefix)) continue;
    const bool has_value = name && statement.Take(',');
    statement.SkipBlanks();
    auto value = !has_value ? std::nullopt : statement.starts_with_quote() ? statement.Quoted() : statement.Word();
    if (value && statement.Take(')')) {
      preferences.insert_or_assign(*std::move(name), *std::move(value));
    } else {
      is_whole = false;
    }
  }
  return is_whole;
}

}  // namespace quillcast::account

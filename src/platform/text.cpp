#include "platform/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "platform/utf8.h"

namespace quillcast::platform {
namespace {

// Whether a terminal or a reader of lines obeys it, or lets it change how the text round it reads.
bool IsObeyed(char32_t code) {
  if (code < 0x7F) return code < 0x20;
  if (code < 0xA0 || code == 0x2028 || code == 0x2029) return true;
  return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = AsciiLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

char AsciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
char AsciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }

bool AsciiIsAlnum(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

std::string AsciiLower(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = AsciiLower(c);
  return out;
}

std::string AsciiUpper(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = AsciiUpper(c);
  return out;
}

bool EqualsIgnoringAsciiCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return AsciiLower(x) == AsciiLower(y); });
}

bool StartsWithIgnoringAsciiCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && EqualsIgnoringAsciiCase(text.substr(0, prefix.size()), prefix);
}

std::string_view Trim(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r\n";
  const auto first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const auto end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
  std::string out;
  for (;;) {
    const auto at = text.find(from);
    out += text.substr(0, at);
    if (at == std::string_view::npos) return out;
    out += to;
    text.remove_prefix(at + from.size());
  }
}

std::string WithLineEnds(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 32);
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    out += text.substr(0, end);
    if (end == std::string_view::npos) break;
    out += "\r\n";
    text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
  }
  return out;
}

std::optional<std::string> PercentDecoded(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escape =
        text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0;
    out += escape ? static_cast<char>(HexValue(text[i + 1]) << 4 | HexValue(text[i + 2])) : text[i];
    if (escape) i += 2;
    if (out.back() == '\0') return std::nullopt;
  }
  return out;
}

std::string PercentEncoded(std::string_view text) {
  std::string out;
  for (const char c : text) {
    const bool is_plain = AsciiIsAlnum(c) || std::string_view("-._/").find(c) != std::string_view::npos;
    out += is_plain ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
  }
  return out;
}

std::string DigitsOf(std::string_view text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits), [](char c) { return c >= '0' && c <= '9'; });
  return digits;
}

std::optional<std::int64_t> ParseWholeNumber(std::string_view text) {
  text = Trim(text);
  if (text.empty() || !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) return {};
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{}) return {};
  return value;
}

std::optional<std::int64_t> WholeNumberBetween(std::string_view text, std::int64_t low, std::int64_t high) {
  if (Trim(text) != text) return {};
  const auto number = ParseWholeNumber(text);
  return number && *number >= low && *number <= high ? number : std::nullopt;
}

bool IsNumberBetween(std::string_view text, std::int64_t low, std::int64_t high) {
  const std::size_t point = std::min(text.find('.'), text.size());
  const auto whole = WholeNumberBetween(text.substr(0, point), low, high);
  if (!whole || point == text.size()) return whole.has_value();
  const std::string_view fraction = text.substr(point + 1);
  if (fraction.empty() || DigitsOf(fraction) != fraction) return false;
  return *whole < high || fraction.find_first_not_of('0') == std::string_view::npos;
}

std::string WithThousands(std::int64_t number) {
  std::string digits = std::to_string(number);
  const std::size_t first = number < 0 ? 1 : 0;
  for (std::size_t at = digits.size(); at > first + 3;) {
    at -= 3;
    digits.insert(at, ",");
  }
  return digits;
}

std::string HumanSize(std::uint64_t bytes) {
  if (bytes < 1024) return Counted(static_cast<std::int64_t>(bytes), "byte", "bytes");
  if (bytes < 1024ULL * 1024) return fmt::format("{:.1f} KiB", static_cast<double>(bytes) / 1024);
  return fmt::format("{:.1f} MiB", static_cast<double>(bytes) / (1024.0 * 1024));
}

std::string Counted(std::int64_t count, std::string_view singular, std::string_view plural) {
  return fmt::format("{} {}", WithThousands(count), count == 1 ? singular : plural);
}

std::string Printable(std::string_view text, std::size_t longest) {
  std::string out;
  while (!text.empty()) {
    const auto [code, length] = DecodeUtf8(text);
    if (code != kNotUtf8 && !IsObeyed(code)) {
      out += text.substr(0, length);
    } else {
      out += '?';
    }
    text.remove_prefix(length);
    if (out.size() > longest) return out + "...";
  }
  return out;
}

std::string PrintableJson(std::string_view json) {
  std::string out;
  out.reserve(json.size());
  while (!json.empty()) {
    const auto [code, length] = DecodeUtf8(json);
    if (IsObeyed(code)) {
      fmt::format_to(std::back_inserter(out), "\\u{:04x}", static_cast<unsigned>(code));
    } else {
      out += json.substr(0, length);
    }
    json.remove_prefix(length);
  }
  return out;
}

}  // namespace quillcast::platform

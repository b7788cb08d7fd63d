#include "mail_file/rtf_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

#include "mail_file/gmime_border.h"
#include "platform/utf8.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kDeepestGroup = 200;  // groups in each other
constexpr std::size_t kMostFonts = 1000;
constexpr std::size_t kLongestControlWord = 32;  // letters; a longer one is none that is known
constexpr std::size_t kLongestNumber = 11;
// Bytes that are held back at most, where a character ends there and where none does.
constexpr std::size_t kMostBytes = 4096;
constexpr std::size_t kMostOfAll = 65536;

struct ShownWord {
  std::string_view word;
  std::string_view text;
};
constexpr std::array kShown = {
    ShownWord{"par", "\r\n"},       ShownWord{"line", "\r\n"},        ShownWord{"row", "\r\n"},
    ShownWord{"sect", "\r\n"},      ShownWord{"page", "\r\n"},        ShownWord{"tab", "\t"},
    ShownWord{"cell", "\t"},        ShownWord{"nestcell", "\t"},      ShownWord{"emdash", "\u2014"},
    ShownWord{"endash", "\u2013"},  ShownWord{"bullet", "\u2022"},    ShownWord{"lquote", "\u2018"},
    ShownWord{"rquote", "\u2019"},  ShownWord{"ldblquote", "\u201C"}, ShownWord{"rdblquote", "\u201D"},
    ShownWord{"emspace", "\u2003"}, ShownWord{"enspace", "\u2002"},
};
constexpr std::array<std::string_view, 12> kLeftOut = {"colortbl",   "fldinst", "footer",    "footerf",
                                                       "header",     "headerf", "info",      "object",
                                                       "nonshppict", "pict",    "listtable", "stylesheet"};

struct FontCharset {
  std::int64_t number;
  const char* charset;
};
constexpr std::array kFontCharsets = {
    FontCharset{77, "macintosh"}, FontCharset{128, "cp932"},  FontCharset{129, "cp949"},  FontCharset{134, "cp936"},
    FontCharset{136, "big5"},     FontCharset{161, "cp1253"}, FontCharset{162, "cp1254"}, FontCharset{163, "cp1258"},
    FontCharset{177, "cp1255"},   FontCharset{178, "cp1256"}, FontCharset{186, "cp1257"}, FontCharset{204, "cp1251"},
    FontCharset{222, "cp874"},    FontCharset{238, "cp1250"},
};

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// 1 where none stands behind a word, which switches it on.
std::int64_t NumberOf(std::string_view digits) {
  std::int64_t number = 1;
  const auto [end, failed] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return failed == std::errc() ? number : 1;
}

}  // namespace

RtfTextDecoder::RtfTextDecoder() : groups_(1) {}

void RtfTextDecoder::Decode(std::string_view rtf, std::string& out) {
  for (const char c : rtf) Take(c, out);
}

void RtfTextDecoder::Take(char c, std::string& out) {
  switch (state_) {
    case State::kText:
      return TakeText(c, out);
    case State::kControl:
      return TakeControl(c, out);
    case State::kHex:
      return TakeHex(c, out);
    case State::kBinary:
      if (--binary_ <= 0) state_ = State::kText;
      return;
    case State::kWord:
      if (IsLetter(c)) {
        if (word_.size() <= kLongestControlWord) word_ += c;
        return;
      }
      state_ = State::kNumber;
      [[fallthrough]];
    case State::kNumber:
      if (IsDigit(c) || (c == '-' && number_.empty())) {
        if (number_.size() < kLongestNumber) number_ += c;
        return;
      }
      state_ = State::kText;
      EndWord(out);
      if (c != ' ') Take(c, out);  // a blank belongs to the word
  }
}

void RtfTextDecoder::TakeText(char c, std::string& out) {
  switch (c) {
    case '{':
      return BeginGroup();
    case '}':
      EndBytes(out);
      return EndGroup();
    case '\\':
      state_ = State::kControl;
      return;
    case '\r':
    case '\n':
    case '\0':
      return;
    default:
      TakeByte(c, out);
  }
}

void RtfTextDecoder::TakeControl(char c, std::string& out) {
  state_ = State::kText;
  if (IsLetter(c)) {
    state_ = State::kWord;
    word_ = c;
    number_.clear();
  } else if (c == '\'') {
    state_ = State::kHex;
    hex_.clear();
  } else if (c == '*') {
    is_ignorable_ = true;
  } else if (c == '~') {
    Show("\u00A0", out);
  } else if (c == '\r' || c == '\n') {
    Show("\r\n", out);
  } else if (c == '_') {
    TakeByte('-', out);
  } else if (c == '\\' || c == '{' || c == '}') {
    TakeByte(c, out);
  }
}

void RtfTextDecoder::TakeHex(char c, std::string& out) {
  hex_ += c;
  if (hex_.size() < 2) return;
  state_ = State::kText;
  unsigned char value = 0;
  const auto [end, failed] = std::from_chars(hex_.data(), hex_.data() + hex_.size(), value, 16);
  if (failed == std::errc() && end == hex_.data() + hex_.size()) TakeByte(static_cast<char>(value), out);
}

void RtfTextDecoder::BeginGroup() {
  is_ignorable_ = false;
  skipped_ = 0;
  if (groups_.size() == kDeepestGroup) {
    ++too_deep_;
  } else {
    groups_.push_back(group());
  }
}

void RtfTextDecoder::EndGroup() {
  skipped_ = 0;
  if (too_deep_ > 0) {
    --too_deep_;
  } else if (groups_.size() > 1) {
    groups_.pop_back();
  }
}

// A word that stands for a character, sets something, or names what the rest of its group is.
void RtfTextDecoder::EndWord(std::string& out) {
  const bool is_ignorable = std::exchange(is_ignorable_, false);
  if (word_ == "u") return TakeUnicode(NumberOf(number_), out);
  const auto* const row = std::ranges::find(kShown, word_, &ShownWord::word);
  if (row != kShown.end()) return Show(row->text, out);
  if (SetByWord(NumberOf(number_), out)) return;
  if ((is_ignorable && word_ != "htmltag") || std::ranges::find(kLeftOut, word_) != kLeftOut.end())
    group().is_left_out = true;
}

bool RtfTextDecoder::SetByWord(std::int64_t number, std::string& out) {
  if (word_ == "uc") {
    group().bytes_behind_unicode = std::clamp<std::int64_t>(number, 0, 10);
  } else if (word_ == "bin") {
    binary_ = number;
    if (binary_ > 0) state_ = State::kBinary;
  } else if (word_ == "ansicpg") {
    EndBytes(out);
    whole_charset_ = number == 65001 ? "utf-8" : "cp" + std::to_string(number);
  } else if (word_ == "fromhtml") {
    is_of_html_ = number != 0;
  } else if (word_ == "htmlrtf") {
    EndBytes(out);
    group().is_for_rtf_alone = number != 0;
  } else if (word_ == "f" || word_ == "fcharset") {
    EndBytes(out);
    ChooseFont(number);
  } else if (word_ == "fonttbl") {
    group().is_font_table = group().is_left_out = true;
  } else {
    return false;
  }
  return true;
}

// Of the font table the fonts and their character sets, elsewhere the font of what follows.
void RtfTextDecoder::ChooseFont(std::int64_t number) {
  if (word_ == "fcharset") {
    const auto* const row = std::ranges::find(kFontCharsets, number, &FontCharset::number);
    if (group().is_font_table && row != kFontCharsets.end() && fonts_.size() < kMostFonts) fonts_[font_] = row->charset;
  } else if (group().is_font_table) {
    font_ = number;
  } else {
    const auto font = fonts_.find(number);
    group().charset = font == fonts_.end() ? nullptr : font->second;
  }
}

void RtfTextDecoder::TakeUnicode(std::int64_t number, std::string& out) {
  const auto code = static_cast<std::uint32_t>(number) & 0xFFFF;  // written with a sign
  skipped_ = group().bytes_behind_unicode;
  if (code >= 0xD800 && code < 0xDC00) {
    high_half_ = code;
    return;
  }
  const bool is_low = code >= 0xDC00 && code < 0xE000;
  const std::uint32_t high = std::exchange(high_half_, 0);
  if (is_low && high == 0) return;
  std::string text;
  platform::AppendUtf8(text, is_low ? 0x10000 + ((high & 0x3FF) << 10) + (code & 0x3FF) : code);
  if (code != 0) Show(text, out);
}

void RtfTextDecoder::TakeByte(char c, std::string& out) {
  if (skipped_ > 0) {
    --skipped_;
  } else if (is_shown()) {
    bytes_ += c;
    if (bytes_.size() >= (platform::IsAscii({&c, 1}) ? kMostBytes : kMostOfAll)) EndBytes(out);
  }
}

void RtfTextDecoder::EndBytes(std::string& out) {
  if (bytes_.empty()) return;
  const auto converted = ConvertToUtf8(bytes_, group().charset != nullptr ? group().charset : whole_charset_);
  out += converted ? converted->text : DecodeHeaderText(bytes_);
  bytes_.clear();
}

void RtfTextDecoder::Show(std::string_view text, std::string& out) {
  if (!is_shown()) return;
  EndBytes(out);
  out += text;
}

}  // namespace quillcast::mail_file

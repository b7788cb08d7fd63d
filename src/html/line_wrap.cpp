#include "html/line_wrap.h"

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "html/characters.h"
#include "platform/utf8.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kColumnsOfTab = 8;
constexpr char32_t kEmojiPresentation = 0xFE0F;

std::size_t ColumnAfter(std::size_t column, std::string_view blanks) {
  for (const char c : blanks) column = c == '\t' ? (column / kColumnsOfTab + 1) * kColumnsOfTab : column + 1;
  return column;
}

bool IsWide(char32_t code) {
  const int width = u_getIntPropertyValue(static_cast<UChar32>(code), UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH;
}

// Classes of Unicode's line breaking (UAX 14): what must not begin a line, and what must not end it.
bool MayBeginLine(int line_break) {
  constexpr int kNot[] = {U_LB_CLOSE_PUNCTUATION, U_LB_CLOSE_PARENTHESIS, U_LB_EXCLAMATION,
                          U_LB_NONSTARTER,        U_LB_BREAK_AFTER,       U_LB_CONDITIONAL_JAPANESE_STARTER,
                          U_LB_INFIX_NUMERIC,     U_LB_INSEPARABLE,       U_LB_BREAK_SYMBOLS};
  return std::find(std::begin(kNot), std::end(kNot), line_break) == std::end(kNot);
}
// Its words stand apart by blanks.
bool IsHangul(int line_break) {
  return line_break == U_LB_H2 || line_break == U_LB_H3 || line_break == U_LB_JL || line_break == U_LB_JV ||
         line_break == U_LB_JT;
}
bool MayEndLine(int line_break) { return line_break != U_LB_OPEN_PUNCTUATION; }

// A character as a reader sees it: a letter with its marks, an emoji with all that is joined to it.
struct Character {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t columns = 0;
  bool is_wide = false;
  int line_break = 0;  // its class, when it is wide
};

struct CloseIterator {
  void operator()(UBreakIterator* iterator) const { ubrk_close(iterator); }
};

// The characters of one line after the other.
class CharacterReader {
 public:
  void Start(std::string_view line) {
    line_ = line;
    current_ = {};
    is_ascii_ = platform::IsAscii(line);
    if (!is_ascii_) SetIterator();
    Advance();
  }

  bool at_end() const { return current_.begin >= line_.size(); }
  const Character& current() const { return current_; }
  char byte() const { return line_[current_.begin]; }
  // A blank with a mark on it is none.
  bool at_blank() const { return !at_end() && IsBlank(byte()) && current_.end - current_.begin == 1; }

  void Advance() {
    current_ = {current_.end, current_.end, 0, false, 0};
    if (at_end()) return;
    if (is_ascii_) {
      ++current_.end;
      current_.columns = DisplayColumns(static_cast<char32_t>(byte()));
      return;
    }
    current_.end = NextBoundary();
    Measure();
  }

 private:
  void SetIterator() {
    UErrorCode status = U_ZERO_ERROR;
    if (!iterator_) iterator_.reset(ubrk_open(UBRK_CHARACTER, "en", nullptr, 0, &status));
    UText text = UTEXT_INITIALIZER;
    utext_openUTF8(&text, line_.data(), static_cast<std::int64_t>(line_.size()), &status);
    ubrk_setUText(iterator_.get(), &text, &status);
    utext_close(&text);
    if (U_FAILURE(status)) iterator_.reset();
  }

  // Code points, if the library lacks its rules.
  std::size_t NextBoundary() {
    const std::size_t begin = current_.begin;
    if (!iterator_) return begin + platform::DecodeUtf8(line_.substr(begin)).length;
    const std::int32_t next = ubrk_next(iterator_.get());
    return next == UBRK_DONE ? line_.size() : static_cast<std::size_t>(next);
  }

  void Measure() {
    std::string_view rest = line_.substr(current_.begin, current_.end - current_.begin);
    const char32_t first = platform::DecodeUtf8(rest).code;
    while (!rest.empty()) {
      const auto [code, length] = platform::DecodeUtf8(rest);
      const bool emoji =
          code == kEmojiPresentation || u_hasBinaryProperty(static_cast<UChar32>(code), UCHAR_REGIONAL_INDICATOR);
      current_.columns = std::max(current_.columns, emoji ? 2 : DisplayColumns(code));
      rest.remove_prefix(length);
    }
    current_.is_wide = IsWide(first);
    if (current_.is_wide) {
      current_.line_break = u_getIntPropertyValue(static_cast<UChar32>(first), UCHAR_LINE_BREAK);
    }
  }

  std::string_view line_;
  Character current_;
  bool is_ascii_ = true;
  std::unique_ptr<UBreakIterator, CloseIterator> iterator_;
};

class TextWrapper {
 public:
  TextWrapper(std::size_t width, LongWords long_words) : width_(width), long_words_(long_words) {}

  void WrapLine(std::string_view line) {
    const bool fits = line.size() <= width_ && line.find('\t') == std::string_view::npos;  // a column is a byte or more
    if (fits || line.size() > std::numeric_limits<std::int32_t>::max()) {
      out_ += line;
      return;
    }
    line_ = line;
    column_ = 0;
    reader_.Start(line);
    for (bool first = true; !reader_.at_end(); first = false) {
      const std::string_view blanks = ReadBlanks();
      if (reader_.at_end()) {
        AppendFitting(blanks);
      } else {
        AppendWord(blanks, first);
      }
    }
  }

  void EndLine() { out_ += '\n'; }
  std::string Finish() && { return std::move(out_); }

 private:
  struct Word {
    std::string_view text;
    std::size_t columns = 0;
    bool has_address = false;
  };

  std::string_view ReadBlanks() {
    const std::size_t begin = reader_.current().begin;
    while (reader_.at_blank()) reader_.Advance();
    return line_.substr(begin, reader_.current().begin - begin);
  }

  // Reads to the next place where a line may break. Meanwhile it notes in `cuts_` where the word is to be cut if it is
  // found to be too wide, and in `end_column_` where its last part ends; it begins in `column`.
  Word ReadWord(std::size_t column) {
    Word word;
    cuts_.clear();
    const std::size_t begin = reader_.current().begin;
    bool in_address = false;
    for (Character last; !reader_.at_end() && !reader_.at_blank(); reader_.Advance()) {
      const Character& next = reader_.current();
      if (next.is_wide && !(MayBeginLine(next.line_break) && MayEndLine(next.line_break))) in_address = false;
      const bool between_wide = last.is_wide && next.is_wide && !in_address;
      const bool in_korean = long_words_ == LongWords::kKept && IsHangul(last.line_break) && IsHangul(next.line_break);
      if (between_wide && !in_korean && MayEndLine(last.line_break) && MayBeginLine(next.line_break)) break;
      if (reader_.byte() == '/' && line_.substr(begin, next.end - begin).ends_with("://")) {
        in_address = word.has_address = true;
      }
      if (column + next.columns > width_ && next.begin > begin) {
        cuts_.push_back(next.begin - begin);
        column = 0;
      }
      column += next.columns;
      word.columns += next.columns;
      last = next;
    }
    end_column_ = column;
    word.text = line_.substr(begin, reader_.current().begin - begin);
    return word;
  }

  void AppendWord(std::string_view blanks, bool first) {
    const std::size_t after_blanks = ColumnAfter(column_, blanks);
    const Word word = ReadWord(first ? after_blanks : 0);
    if (first || after_blanks + word.columns <= width_) {
      out_ += blanks;
      column_ = after_blanks;
    } else {
      out_ += '\n';
      column_ = 0;
    }
    if (word.columns <= width_ || word.has_address || long_words_ == LongWords::kKept) {
      out_ += word.text;
      column_ += word.columns;
      return;
    }
    std::size_t done = 0;
    for (const std::size_t cut : cuts_) {
      out_ += word.text.substr(done, cut - done);
      out_ += '\n';
      done = cut;
    }
    out_ += word.text.substr(done);
    column_ = end_column_;
  }

  void AppendFitting(std::string_view blanks) {
    for (; !blanks.empty() && ColumnAfter(column_, blanks.substr(0, 1)) <= width_; blanks.remove_prefix(1)) {
      column_ = ColumnAfter(column_, blanks.substr(0, 1));
      out_ += blanks.front();
    }
  }

  std::size_t width_;
  LongWords long_words_;
  CharacterReader reader_;
  std::string_view line_;
  std::size_t column_ = 0;         // of the line being written
  std::vector<std::size_t> cuts_;  // offsets into the word
  std::size_t end_column_ = 0;
  std::string out_;
};

}  // namespace

std::size_t DisplayColumns(char32_t code) {
  constexpr char32_t kSoftHyphen = 0xAD;
  if (code < 0x7F) return code < ' ' ? 0 : 1;
  if (code == platform::kNotUtf8 || code == kSoftHyphen) return 1;
  switch (u_charType(static_cast<UChar32>(code))) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_FORMAT_CHAR:
    case U_CONTROL_CHAR:
      return 0;
    default:
      return IsWide(code) ? 2 : 1;
  }
}

std::string WrapText(std::string_view utf8, std::size_t width, LongWords long_words) {
  TextWrapper wrapper(width, long_words);
  for (;;) {
    const std::size_t end = utf8.find('\n');
    wrapper.WrapLine(utf8.substr(0, end));
    if (end == std::string_view::npos) return std::move(wrapper).Finish();
    wrapper.EndLine();
    utf8.remove_prefix(end + 1);
  }
}

}  // namespace quillcast::html

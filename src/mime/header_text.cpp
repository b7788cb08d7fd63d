#include "mime/header_text.h"

#include <algorithm>

#include "mime/encoded_words.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mime {
namespace {

constexpr std::size_t kLongestPlainWord = 900;  // well under the 998 octets of a line, with the name before it
constexpr std::size_t kLongestGap = 60;         // more blanks go into encoded words, where no fold makes a blank line
constexpr std::size_t kLongestQuotedName = 64;  // a longer display name is encoded, because that can be folded
constexpr std::size_t kShortestRoom = 24;       // columns below which an encoded word begins a new line

constexpr char32_t kReplacement = 0xFFFD;

// A word of the value, with the blanks before it. Offsets into the value.
struct PlacedWord {
  std::size_t gap;
  std::size_t begin;
  std::size_t end;
};

PlacedWord NextWord(std::string_view text, std::size_t from) {
  PlacedWord word{from, std::min(text.find_first_not_of(' ', from), text.size()), 0};
  word.end = std::min(text.find(' ', word.begin), text.size());
  return word;
}

bool MustEncode(std::string_view text, const PlacedWord& word) {
  const std::string_view letters = text.substr(word.begin, word.end - word.begin);
  return letters.size() > kLongestPlainWord || word.begin - word.gap > kLongestGap || NeedsEncodedWord(letters);
}

// Begins a new line when fewer than `needed` columns are left; the blank of the fold is one of the text.
void FoldBefore(std::string& out, std::size_t needed, std::size_t& column) {
  if (column + needed <= kHeaderColumns) return;
  out += "\r\n";
  column = 0;
}

bool IsAtomText(char c) {
  return platform::AsciiIsAlnum(c) || std::string_view("!#$%&'*+-/=?^_`{|}~").find(c) != std::string_view::npos;
}

void AppendQuoted(std::string& out, std::string_view ascii) {
  out += '"';
  for (const char c : ascii) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  out += '"';
}

void AppendDisplayName(std::string& out, std::string_view text, const charset::Charset& charset,
                       HeaderEncoding encoding, std::size_t& column) {
  if (NeedsEncodedWord(text) || text.size() > kLongestQuotedName) {
    AppendEncodedWords(out, text, charset, encoding, column);
    return;
  }
  const std::size_t start = out.size();
  const bool atoms = text.find("  ") == std::string_view::npos &&
                     std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || IsAtomText(c); });
  if (atoms) {
    out += text;
  } else {
    AppendQuoted(out, text);
  }
  column += out.size() - start;
}

bool StructuresList(char c) {
  return c == ' ' || c == '<' || c == '>' || c == ',' || c == ';' || c == '(' || c == ')' || c == '\\';
}

// Quoted local parts may hold anything (RFC 5321 4.1.2); outside the quotes nothing that structures a mailbox list.
std::string CleanAddress(std::string_view address) {
  std::string clean;
  clean.reserve(address.size());
  bool quoted = false;
  for (std::size_t i = 0; i < address.size(); ++i) {
    const char c = address[i];
    if (quoted && c == '\\' && i + 1 < address.size()) {
      clean += {c, address[++i]};
      continue;
    }
    if (c == '"') quoted = !quoted;
    if (quoted || !StructuresList(c)) clean += c;
  }
  if (quoted) {  // a quote that never closes would swallow the rest of the header
    std::erase_if(clean, [](char c) { return c == '"' || StructuresList(c); });
  }
  return clean;
}

}  // namespace

HeaderText::HeaderText(std::string_view utf8) {
  text_.reserve(utf8.size());
  for (;;) {
    const std::size_t run = platform::PrintableRun(utf8);
    text_ += utf8.substr(0, run);
    utf8.remove_prefix(run);
    if (utf8.empty()) break;
    const auto [code, length] = platform::DecodeUtf8(utf8);
    if (code == platform::kNotUtf8) {
      platform::AppendUtf8(text_, kReplacement);
    } else if (code < 0x20 || (code >= 0x7F && code < 0xA0)) {
      text_ += ' ';
    } else {
      text_ += utf8.substr(0, length);
    }
    utf8.remove_prefix(length);
  }
  const std::size_t end = text_.find_last_not_of(' ');
  text_.resize(end == std::string::npos ? 0 : end + 1);
  text_.erase(0, std::min(text_.find_first_not_of(' '), text_.size()));
}

bool CanEncode(const charset::Charset& charset, std::string_view utf8) {
  std::string bytes;
  return charset.Encode(utf8, bytes, nullptr, charset::Unmapped::kFail);
}

void AppendUnstructured(std::string& out, FieldName name, const HeaderText& value, const charset::Charset& charset,
                        HeaderEncoding encoding) {
  const std::string_view text = value.text();
  out += name.text();
  out += ": ";
  std::size_t column = name.text().size() + 2;
  for (std::size_t at = 0; at < text.size();) {
    const PlacedWord first = NextWord(text, at);
    PlacedWord last = first;
    const bool encoded = MustEncode(text, first);
    // Readers drop the blanks between two encoded words, so neighbours are encoded as one text with its blanks.
    for (PlacedWord next = last; encoded && next.end < text.size(); last = next) {
      next = NextWord(text, last.end);
      if (!MustEncode(text, next)) break;
    }
    at = last.end;
    const std::size_t gap_size = first.begin - first.gap;
    const std::size_t needed =
        encoded ? std::max(kShortestRoom, FirstWordColumns(text.substr(first.begin), charset, encoding))
                : last.end - first.begin;
    // One blank stays outside where a long gap goes into the word, so that a fold has its blank.
    const bool long_gap = encoded && gap_size + needed > kHeaderColumns;
    const std::size_t inside = long_gap ? first.gap + 1 : first.begin;
    const std::string_view gap = text.substr(first.gap, inside - first.gap);
    const std::string_view words = text.substr(inside, last.end - inside);
    if (first.gap > 0 || (encoded && column + needed > kHeaderColumns)) {
      FoldBefore(out, gap.size() + needed, column);
      if (gap.empty() && column == 0) out += ' ';
    }
    out += gap;
    column += gap.size();
    if (encoded) {
      AppendEncodedWords(out, words, charset, encoding, column);
    } else {
      out += words;
      column += words.size();
    }
  }
  out += "\r\n";
}

void AppendMailbox(std::string& out, FieldName name, const HeaderText& display_name, const HeaderText& address,
                   const charset::Charset& charset, HeaderEncoding encoding) {
  const std::string clean = CleanAddress(address.text());
  out += name.text();
  out += ": ";
  std::size_t column = name.text().size() + 2;
  if (display_name.text().empty()) {
    out += clean;
  } else {
    AppendDisplayName(out, display_name.text(), charset, encoding, column);
    FoldBefore(out, clean.size() + 3, column);
    out += " <";
    out += clean;
    out += '>';
  }
  out += "\r\n";
}

}  // namespace quillcast::mime

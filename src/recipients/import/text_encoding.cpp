#include "recipients/import/text_encoding.h"

#include <unicode/ucnv.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

#include "platform/file.h"
#include "platform/locale_codeset.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "recipients/import/reading_given_up.h"

namespace quillcast::recipients {
namespace {

using platform::EqualsIgnoringAsciiCase;

constexpr std::size_t kLongestMark = 4;

struct ByteOrderMark {
  std::string_view bytes;
  const char* encoding;
};
// The mark of UTF-32 begins with that of UTF-16.
constexpr std::array<ByteOrderMark, 5> kMarks = {{{"\xEF\xBB\xBF", "UTF-8"},
                                                  {std::string_view("\xFF\xFE\0\0", 4), "UTF-32LE"},
                                                  {std::string_view("\0\0\xFE\xFF", 4), "UTF-32BE"},
                                                  {"\xFF\xFE", "UTF-16LE"},
                                                  {"\xFE\xFF", "UTF-16BE"}}};

const ByteOrderMark* MarkOf(std::string_view beginning) {
  for (const ByteOrderMark& mark : kMarks) {
    if (beginning.starts_with(mark.bytes)) return &mark;
  }
  return nullptr;
}

// Takes the pieces of a text, and tells at the end how much of it is UTF-8.
class Utf8Census {
 public:
  void Feed(std::string_view piece) {
    if (IsOther()) return;
    std::string joined;
    if (!split_.empty()) {
      joined = split_.append(piece);
      piece = joined;
    }
    const auto tail = platform::IncompleteUtf8Tail(piece);
    Count(piece.substr(0, piece.size() - tail));
    split_.assign(piece.substr(piece.size() - tail));
  }
  void Finish() { Count(std::exchange(split_, {})); }

  std::int64_t bad_bytes() const { return bad_bytes_; }
  std::uint64_t first_bad() const { return first_bad_; }  // its position
  // A list with a byte that went wrong: characters of several bytes are seldom there by chance.
  bool IsNearlyUtf8() const { return bad_bytes_ > 0 && characters_ >= kCharactersForABadByte * bad_bytes_; }

 private:
  static constexpr std::int64_t kCharactersForABadByte = 2;
  static constexpr std::int64_t kEnoughToTell = 1000;

  bool IsOther() const { return bad_bytes_ > kEnoughToTell && !IsNearlyUtf8(); }
  void Count(std::string_view text) {
    if (platform::IsUtf8(text)) {
      characters_ +=
          std::count_if(text.begin(), text.end(), [](char c) { return static_cast<std::uint8_t>(c) > 0xC1; });
      at_ += text.size();
      return;
    }
    while (!text.empty()) {
      const auto [code, length] = platform::DecodeUtf8(text);
      if (code == platform::kNotUtf8 && ++bad_bytes_ == 1) first_bad_ = at_;
      if (length > 1) ++characters_;
      at_ += length;
      text.remove_prefix(length);
    }
  }

  std::int64_t characters_ = 0;  // of several bytes
  std::int64_t bad_bytes_ = 0;
  std::uint64_t first_bad_ = 0;
  std::uint64_t at_ = 0;
  std::string split_;
};

// Text in UTF-16 has zeros in every other byte, wherever addresses, digits and line ends stand. Nothing for other text.
std::optional<const char*> Utf16ByItsZeros(std::string_view beginning) {
  const std::size_t units = beginning.size() / 2;
  std::size_t first_zeros = 0;
  std::size_t second_zeros = 0;
  for (std::size_t unit = 0; unit < units; ++unit) {
    first_zeros += static_cast<std::size_t>(beginning[2 * unit] == '\0');
    second_zeros += static_cast<std::size_t>(beginning[2 * unit + 1] == '\0');
  }
  const auto stand_in = [units](std::size_t zeros, std::size_t others) {
    return units >= 4 && zeros * 4 >= units && others * 50 <= units;
  };
  if (stand_in(second_zeros, first_zeros)) return "UTF-16LE";
  if (stand_in(first_zeros, second_zeros)) return "UTF-16BE";
  return {};
}

Result<std::string> ReadBeginning(int fd, const std::filesystem::path& path, std::size_t size) {
  if (::lseek(fd, 0, SEEK_SET) < 0) return platform::SystemError("read", path, errno);
  std::string beginning(size, '\0');
  const auto count = platform::ReadSome(fd, path, beginning.data(), beginning.size());
  if (!count) return count.error();
  beginning.resize(*count);
  return beginning;
}

Result<Utf8Census> TakeCensus(int fd, const std::filesystem::path& path, std::string block,
                              const platform::CancelToken* cancel) {
  Utf8Census census;
  while (!block.empty()) {
    if (IsGivenUp(cancel)) return ReadingGivenUp(path);
    census.Feed(block);
    block.resize(platform::kFileBlock);
    const auto count = platform::ReadSome(fd, path, block.data(), block.size());
    if (!count) return count.error();
    block.resize(*count);
  }
  census.Finish();
  return census;
}

// The line, from 1, of a position.
Result<std::int64_t> LineAt(int fd, const std::filesystem::path& path, std::uint64_t position,
                            const platform::CancelToken* cancel) {
  if (::lseek(fd, 0, SEEK_SET) < 0) return platform::SystemError("read", path, errno);
  std::int64_t line = 1;
  char before = '\0';
  std::string block(platform::kFileBlock, '\0');
  while (position > 0) {
    if (IsGivenUp(cancel)) return ReadingGivenUp(path);
    const auto count = platform::ReadSome(fd, path, block.data(), std::min<std::uint64_t>(block.size(), position));
    if (!count) return count.error();
    if (*count == 0) break;
    for (const char c : std::string_view(block).substr(0, *count)) {
      if (c == '\r' || (c == '\n' && before != '\r')) ++line;
      before = c;
    }
    position -= *count;
  }
  return line;
}

TextEncoding MarkedBy(const ByteOrderMark& mark) {
  return {.name = mark.encoding, .how_known = "byte order mark", .mark_length = mark.bytes.size()};
}

TextEncoding OtherThanUtf8(std::string_view system_code_page) {
  if (platform::IsUtf8Codeset(system_code_page) || !charset::OpenConverter(system_code_page)) {
    return {.name = "windows-1252", .how_known = "it is not valid UTF-8"};
  }
  return {.name = std::string(system_code_page), .how_known = "the system's code page"};
}

}  // namespace

bool IsSameEncoding(std::string_view a, std::string_view b) {
  const auto name_of = [](std::string_view name) {
    const auto converter = charset::OpenConverter(name);
    UErrorCode status = U_ZERO_ERROR;
    const char* found = converter ? ucnv_getName(converter.get(), &status) : nullptr;
    return std::string(found == nullptr ? name : found);
  };
  return EqualsIgnoringAsciiCase(name_of(a), name_of(b));
}

void AppendRepairedUtf8(std::string_view text, std::string& out) {
  while (!text.empty()) {
    const auto [code, length] = platform::DecodeUtf8(text);
    if (code == platform::kNotUtf8) {
      platform::AppendUtf8(out, platform::kReplacement);
    } else {
      out.append(text.substr(0, length));
    }
    text.remove_prefix(length);
  }
}

Result<TextEncoding> FindOutEncoding(int fd, const std::filesystem::path& path, std::string_view system_code_page,
                                     const platform::CancelToken* cancel) {
  auto block = ReadBeginning(fd, path, platform::kFileBlock);
  if (!block) return block.error();
  const ByteOrderMark* mark = MarkOf(*block);
  if (mark != nullptr && mark->encoding != kMarks.front().encoding) return MarkedBy(*mark);
  if (const auto wide = Utf16ByItsZeros(*block); wide && mark == nullptr) {
    return TextEncoding{.name = *wide, .how_known = "by its zeros, it has no mark", .is_utf16_unmarked = true};
  }
  const auto census = TakeCensus(fd, path, std::move(*block), cancel);
  if (!census) return census.error();
  TextEncoding found = mark != nullptr            ? MarkedBy(*mark)
                       : census->bad_bytes() == 0 ? TextEncoding{.name = "UTF-8", .how_known = "all of it is valid"}
                       : census->IsNearlyUtf8()   ? TextEncoding{.name = "UTF-8", .how_known = "nearly all is valid"}
                                                  : OtherThanUtf8(system_code_page);
  if (found.name != "UTF-8") return found;
  found.is_valid_utf8 = census->bad_bytes() == 0;
  found.bad_bytes = census->bad_bytes();
  if (found.is_valid_utf8) return found;
  const auto line = LineAt(fd, path, census->first_bad(), cancel);
  if (!line) return line.error();
  found.first_bad_line = *line;
  return found;
}

Result<void> CheckEncodingName(std::string_view name) {
  if (name.empty() || charset::OpenConverter(name)) return {};
  return Error{Failure::kUsage, Say("\"{}\" is no known encoding.", platform::Printable(name, 100)),
               R"(Name one as in "UTF-8", "ISO-8859-1", "windows-1252", "Shift_JIS".)"};
}

Result<TextEncoding> EncodingAsAsked(int fd, const std::filesystem::path& path, std::string_view name) {
  if (const auto known = CheckEncodingName(name); !known) return known.error();
  const auto beginning = ReadBeginning(fd, path, kLongestMark);
  if (!beginning) return beginning.error();
  const ByteOrderMark* mark = MarkOf(*beginning);
  const bool is_its_own = mark != nullptr && IsSameEncoding(name, mark->encoding);
  return TextEncoding{
      .name = std::string(name), .how_known = "as asked", .mark_length = is_its_own ? mark->bytes.size() : 0};
}

}  // namespace quillcast::recipients

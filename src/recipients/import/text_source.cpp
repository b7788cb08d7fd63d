#include "recipients/import/text_source.h"

#include <fmt/format.h>
#include <unicode/ucnv.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/locale_codeset.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::recipients {
namespace {

using platform::EqualsIgnoringAsciiCase;

constexpr std::size_t kBlock = std::size_t{256} * 1024;
constexpr char32_t kReplacement = 0xFFFD;

struct ByteOrderMark {
  std::string_view bytes;
  const char* encoding;
};
constexpr std::array<ByteOrderMark, 3> kMarks = {
    {{"\xEF\xBB\xBF", "UTF-8"}, {"\xFF\xFE", "UTF-16LE"}, {"\xFE\xFF", "UTF-16BE"}}};

// Takes pieces of a text and tells at the end whether it was UTF-8 throughout.
class Utf8Check {
 public:
  void Feed(std::string_view piece) {
    if (!valid_) return;
    if (!split_.empty()) {
      const auto lead_in = piece.substr(0, 3);
      split_.append(lead_in);
      const auto whole = split_.size() - platform::IncompleteUtf8Tail(split_);
      if (!platform::IsUtf8(std::string_view(split_).substr(0, whole))) {
        valid_ = false;
        return;
      }
      split_.erase(0, whole);
      piece.remove_prefix(lead_in.size());
      if (piece.empty()) return;
      // What is left of split_ is whole with the next bytes of this piece.
      if (!split_.empty()) return Feed(piece);
    }
    const auto tail = platform::IncompleteUtf8Tail(piece);
    split_.assign(piece.substr(piece.size() - tail));
    valid_ = platform::IsUtf8(piece.substr(0, piece.size() - tail));
  }
  bool Valid() const { return valid_ && split_.empty(); }

 private:
  bool valid_ = true;
  std::string split_;
};

struct Inspection {
  std::string beginning;  // the first bytes, for a byte order mark
  bool is_utf8 = true;
};

Result<Inspection> Inspect(int fd, const std::filesystem::path& path) {
  Inspection seen;
  Utf8Check check;
  std::string buffer(kBlock, '\0');
  for (;;) {
    const auto count = platform::ReadSome(fd, path, buffer.data(), buffer.size());
    if (!count) return count.error();
    if (*count == 0) break;
    const std::string_view piece(buffer.data(), *count);
    if (seen.beginning.size() < 3) seen.beginning.append(piece.substr(0, 3));
    check.Feed(piece);
  }
  seen.is_utf8 = check.Valid();
  return seen;
}

const ByteOrderMark* MarkOf(std::string_view beginning) {
  for (const ByteOrderMark& mark : kMarks) {
    if (beginning.starts_with(mark.bytes)) return &mark;
  }
  return nullptr;
}

std::unique_ptr<UConverter, CloseConverter> OpenConverter(const std::string& name) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<UConverter, CloseConverter> converter(ucnv_open(name.c_str(), &status));
  return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

// One encoding has many names: "utf8" is UTF-8.
bool IsSameEncoding(const std::string& a, const char* b) {
  const auto name_of = [](const std::string& name) {
    const auto converter = OpenConverter(name);
    UErrorCode status = U_ZERO_ERROR;
    const char* found = converter ? ucnv_getName(converter.get(), &status) : nullptr;
    return found == nullptr ? name : std::string(found);
  };
  return EqualsIgnoringAsciiCase(name_of(a), name_of(b));
}

Error UnknownEncoding(std::string_view name) {
  return {Failure::kUsage, Say("\"{}\" is no known encoding.", platform::Printable(name, 100)),
          R"(Name one as in "UTF-8", "ISO-8859-1", "windows-1252", "Shift_JIS".)"};
}

void AppendUtf16(std::u16string_view units, char16_t& high_half, std::string& out) {
  for (const char16_t unit : units) {
    const bool is_low = unit >= 0xDC00 && unit < 0xE000;
    if (high_half != 0) {
      const char32_t pair = 0x10000 + ((static_cast<char32_t>(high_half) - 0xD800) << 10) + (unit - 0xDC00);
      platform::AppendUtf8(out, is_low ? pair : kReplacement);
      high_half = 0;
      if (is_low) continue;
    }
    if (unit >= 0xD800 && unit < 0xDC00) {
      high_half = unit;
    } else {
      platform::AppendUtf8(out, is_low ? kReplacement : unit);
    }
  }
}

}  // namespace

void CloseConverter::operator()(UConverter* converter) const { ucnv_close(converter); }

Result<TextSource> TextSource::Open(const std::filesystem::path& path, std::string_view overrule,
                                    std::string_view system_code_page) {
  TextSource source;
  source.path_ = path;
  auto fd = platform::OpenForReading(path);
  if (!fd) return fd.error();
  source.fd_ = std::move(*fd);
  const auto size = platform::FileSize(source.fd_.get(), path);
  if (!size) return size.error();
  source.size_ = *size;
  const auto seen = Inspect(source.fd_.get(), path);
  if (!seen) return seen.error();

  const ByteOrderMark* mark = MarkOf(seen->beginning);
  const auto decide = [&source](std::string_view encoding, std::string_view how) {
    source.encoding_ = encoding;
    source.how_known_ = how;
  };
  if (!overrule.empty()) {
    decide(overrule, "as asked");
    if (mark != nullptr && !IsSameEncoding(source.encoding_, mark->encoding)) mark = nullptr;
  } else if (mark != nullptr) {
    decide(mark->encoding, "byte order mark");
  } else if (seen->is_utf8) {
    decide("UTF-8", "all of it is valid");
  } else if (platform::IsUtf8Codeset(system_code_page) || !OpenConverter(std::string(system_code_page))) {
    decide("windows-1252", "it is not valid UTF-8");
  } else {
    decide(system_code_page, "the system's code page");
  }
  const bool as_it_is = seen->is_utf8 && IsSameEncoding(source.encoding_, "UTF-8");
  if (!as_it_is) source.converter_ = OpenConverter(source.encoding_);
  if (!as_it_is && !source.converter_) return UnknownEncoding(source.encoding_);

  source.bytes_read_ = mark == nullptr ? 0 : mark->bytes.size();
  if (::lseek(source.fd_.get(), static_cast<off_t>(source.bytes_read_), SEEK_SET) < 0) {
    return platform::SystemError("read", path, errno);
  }
  source.buffer_.resize(kBlock);
  return source;
}

void TextSource::Convert(std::string_view bytes, bool is_last, std::string& out) {
  std::array<char16_t, 4096> units;
  const char* from = bytes.data();
  for (;;) {
    char16_t* to = units.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(converter_.get(), &to, units.data() + units.size(), &from, bytes.data() + bytes.size(), nullptr,
                   static_cast<UBool>(is_last), &status);
    AppendUtf16({units.data(), static_cast<std::size_t>(to - units.data())}, high_half_, out);
    if (status != U_BUFFER_OVERFLOW_ERROR) break;
  }
  if (is_last && high_half_ != 0) platform::AppendUtf8(out, kReplacement);
}

Result<bool> TextSource::Read(std::string& block) {
  block.clear();
  while (block.empty() && !at_end_) {
    const auto count = platform::ReadSome(fd_.get(), path_, buffer_.data(), buffer_.size());
    if (!count) return count.error();
    bytes_read_ += *count;
    at_end_ = *count == 0;
    const std::string_view bytes(buffer_.data(), *count);
    if (converter_) {
      Convert(bytes, at_end_, block);
      continue;
    }
    block.swap(split_);
    split_.clear();
    block.append(bytes);
    const auto tail = at_end_ ? 0 : platform::IncompleteUtf8Tail(block);
    split_.assign(block, block.size() - tail);
    block.resize(block.size() - tail);
  }
  return !block.empty();
}

}  // namespace quillcast::recipients

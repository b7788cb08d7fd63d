#include "recipients/import/text_source.h"

#include <unicode/ucnv.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/file.h"
#include "platform/utf8.h"
#include "recipients/import/reading_given_up.h"

namespace quillcast::recipients {
namespace {

void AppendUtf16(std::u16string_view units, char16_t& high_half, std::string& out) {
  for (const char16_t unit : units) {
    const bool is_low = unit >= 0xDC00 && unit < 0xE000;
    if (high_half != 0) {
      const char32_t pair = 0x10000 + ((static_cast<char32_t>(high_half) - 0xD800) << 10) + (unit - 0xDC00);
      platform::AppendUtf8(out, is_low ? pair : platform::kReplacement);
      high_half = 0;
      if (is_low) continue;
    }
    if (unit >= 0xD800 && unit < 0xDC00) {
      high_half = unit;
    } else {
      platform::AppendUtf8(out, is_low ? platform::kReplacement : unit);
    }
  }
}

}  // namespace

Result<TextSource> TextSource::OpenFile(const std::filesystem::path& path, const platform::CancelToken* cancel) {
  TextSource source;
  source.path_ = path;
  source.cancel_ = cancel;
  auto fd = platform::OpenForReading(path);
  if (!fd) return fd.error();
  source.fd_ = std::move(*fd);
  const auto size = platform::FileSize(source.fd_.get(), path);
  if (!size) return size.error();
  source.size_ = *size;
  return source;
}

Result<void> TextSource::Begin(TextEncoding encoding) {
  encoding_ = std::move(encoding);
  if (!IsSameEncoding(encoding_.name, "UTF-8")) converter_ = charset::OpenConverter(encoding_.name);
  bytes_read_ = encoding_.mark_length;
  if (::lseek(fd_.get(), static_cast<off_t>(bytes_read_), SEEK_SET) < 0)
    return platform::SystemError("read", path_, errno);
  buffer_.resize(platform::kFileBlock);
  return {};
}

Result<TextSource> TextSource::Open(const std::filesystem::path& path, std::string_view overrule,
                                    std::string_view system_code_page, const platform::CancelToken* cancel) {
  auto source = OpenFile(path, cancel);
  if (!source) return source;
  auto encoding = overrule.empty() ? FindOutEncoding(source->fd_.get(), path, system_code_page, cancel)
                                   : EncodingAsAsked(source->fd_.get(), path, overrule);
  if (!encoding) return encoding.error();
  if (const auto begun = source->Begin(std::move(*encoding)); !begun) return begun.error();
  return source;
}

Result<TextSource> TextSource::OpenKnown(const std::filesystem::path& path, const TextEncoding& encoding,
                                         const platform::CancelToken* cancel) {
  auto source = OpenFile(path, cancel);
  if (!source) return source;
  if (const auto begun = source->Begin(encoding); !begun) return begun.error();
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
  if (is_last && high_half_ != 0) platform::AppendUtf8(out, platform::kReplacement);
}

// Whole characters stay in `block`, and what may go on in the next one in split_.
void TextSource::TakeUtf8(std::string_view bytes, std::string& block) {
  block.swap(split_);
  split_.clear();
  block.append(bytes);
  const auto tail = at_end_ ? 0 : platform::IncompleteUtf8Tail(block);
  split_.assign(block, block.size() - tail);
  block.resize(block.size() - tail);
  if (encoding_.is_valid_utf8 || platform::IsUtf8(block)) return;
  std::string repaired;
  AppendRepairedUtf8(block, repaired);
  block.swap(repaired);
}

Result<bool> TextSource::Read(std::string& block) {
  block.clear();
  while (block.empty() && !at_end_) {
    if (IsGivenUp(cancel_)) return ReadingGivenUp(path_);
    const auto count = platform::ReadSome(fd_.get(), path_, buffer_.data(), buffer_.size());
    if (!count) return count.error();
    bytes_read_ += *count;
    at_end_ = *count == 0;
    const std::string_view bytes(buffer_.data(), *count);
    if (converter_) {
      Convert(bytes, at_end_, block);
    } else {
      TakeUtf8(bytes, block);
    }
  }
  return !block.empty();
}

}  // namespace quillcast::recipients

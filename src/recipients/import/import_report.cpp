#include "recipients/import/import_report.h"

#include <fmt/format.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <array>

#include "platform/locale_codeset.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::recipients {
namespace {

constexpr std::string_view kHeading = "Import Started\r\n--------------\r\n\r\n";

// One character in the code page, "?" where it has none. ICU drops some invisible characters without a word, so
// nothing counts as none.
void AppendCharacter(UConverter* converter, char32_t code, std::string& out) {
  std::array<char16_t, 2> units{};
  std::int32_t count = 1;
  if (code < 0x10000) {
    units[0] = static_cast<char16_t>(code);
  } else {
    units = {static_cast<char16_t>(0xD7C0 + (code >> 10)), static_cast<char16_t>(0xDC00 + (code & 0x3FF))};
    count = 2;
  }
  std::array<char, 16> bytes{};
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length = ucnv_fromUChars(converter, bytes.data(), bytes.size(), units.data(), count, &status);
  if (U_FAILURE(status) || length <= 0) {
    out += '?';
  } else {
    out.append(bytes.data(), static_cast<std::size_t>(length));
  }
}

}  // namespace

ImportReport::ImportReport(std::optional<platform::FileWriter> writer, std::string_view code_page)
    : writer_(std::move(writer)) {
  if (platform::IsUtf8Codeset(code_page)) return;
  UErrorCode status = U_ZERO_ERROR;
  converter_.reset(ucnv_open(std::string(code_page).c_str(), &status));
  if (U_FAILURE(status)) {
    converter_.reset();
    return;
  }
  ucnv_setFromUCallBack(converter_.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
}

Result<ImportReport> ImportReport::Create(const std::filesystem::path& file, std::string_view code_page) {
  if (const auto made = platform::EnsureFolder(file.parent_path()); !made) return made.error();
  auto writer = platform::FileWriter::CreateAnew(file);
  if (!writer) return writer.error();
  ImportReport report(std::move(*writer), code_page);
  report.kept_back_ = kHeading;
  if (const auto written = report.Keep(); !written) return written.error();
  return report;
}

void ImportReport::AppendEncoded(std::string_view text) {
  if (!converter_ || platform::IsAscii(text)) {
    kept_back_ += text;
    return;
  }
  while (!text.empty()) {
    const auto [code, length] = platform::DecodeUtf8(text);
    if (code == platform::kNotUtf8) {
      kept_back_ += '?';
    } else {
      AppendCharacter(converter_.get(), code, kept_back_);
    }
    text.remove_prefix(length);
  }
}

void ImportReport::Note(std::string_view label, std::string_view value) {
  kept_back_ += label;
  AppendEncoded(value);
  kept_back_ += "\r\n";
}

Result<void> ImportReport::Keep() {
  constexpr std::size_t kSlice = std::size_t{32} * 1024;  // so that the writer never holds a copy of it all
  if (!writer_) {
    kept_back_.clear();
    return {};
  }
  for (std::string_view rest = kept_back_; !rest.empty(); rest.remove_prefix(std::min(kSlice, rest.size()))) {
    if (auto written = writer_->Write(rest.substr(0, kSlice)); !written) return written;
  }
  kept_back_.clear();
  return writer_->Flush();
}

Result<void> ImportReport::Close(End end, std::uint64_t bytes_processed, const ImportCounts& counts, bool is_harvest) {
  const bool completed = end == End::kCompleted;
  kept_back_ += "\r\n";
  if (completed) {
    kept_back_ += fmt::format("Processed : {} Bytes\r\n\r\n",
                              platform::WithThousands(static_cast<std::int64_t>(bytes_processed)));
  }
  kept_back_ += fmt::format("Added : {}\r\n", counts.added);
  if (!is_harvest) kept_back_ += fmt::format("Ignored : {}\r\n", counts.ignored);
  kept_back_ += fmt::format("Duplicates : {}\r\n", counts.duplicates);
  if (completed) kept_back_ += "\r\n----------------\r\nImport Completed\r\n";
  return Keep();
}

}  // namespace quillcast::recipients

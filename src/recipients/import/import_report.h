// The report of an import: "ReportButton.txt", in the system's code page, its lines ended by CR LF.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "recipients/import/text_encoding.h"

namespace quillcast::recipients {

struct ImportCounts {
  std::int64_t added = 0;
  std::int64_t duplicates = 0;
  std::int64_t ignored = 0;  // by the delimited import alone

  bool operator==(const ImportCounts&) const = default;
};

class ImportReport {
 public:
  // Puts a new file in the place of what stands there, and writes the heading. `code_page` is the locale's codeset;
  // characters that it cannot hold become "?". The folder is made when it is missing.
  static Result<ImportReport> Create(const std::filesystem::path& file, std::string_view code_page);
  // For an import that goes on although its report cannot be made: nothing is written.
  static ImportReport Nowhere() { return ImportReport({}, {}); }

  // One line about one address, kept back until Keep.
  void Added(std::string_view address) { Note("Email Added : ", address); }
  void Duplicated(std::string_view address) { Note("Email Duplicated : ", address); }
  void Ignored(std::string_view value) { Note("Email Ignored : ", value); }

  // Writes the lines kept back: what they tell is in the store for good. After a rollback they must be dropped instead.
  Result<void> Keep();
  void Drop() { kept_back_.clear(); }
  std::size_t BytesKeptBack() const { return kept_back_.size(); }

  // The block at the end. A harvest has no line for ignored addresses; a cancelled import none of what it did not read,
  // nor of an end that it did not come to.
  enum class End { kCompleted, kCancelled };
  Result<void> Close(End end, std::uint64_t bytes_processed, const ImportCounts& counts, bool is_harvest);

 private:
  ImportReport(std::optional<platform::FileWriter> writer, std::string_view code_page);
  void Note(std::string_view label, std::string_view value);
  void AppendEncoded(std::string_view text);

  std::optional<platform::FileWriter> writer_;
  charset::Converter converter_;  // none: the code page is UTF-8
  std::string kept_back_;
};

}  // namespace quillcast::recipients

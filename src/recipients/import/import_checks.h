// What is looked at before an import, in the order in which it is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/complaint.h"
#include "recipients/import/import_mapping.h"

namespace quillcast::recipients {

enum class ImportMode : std::uint8_t { kHarvest, kDelimited };

// The controls of the import's dialog that a complaint sends the focus to.
enum class ImportControl { kFile, kGroup, kGetData, kMapping };

struct ImportForm {
  std::string file;
  bool has_groups = true;
  std::string group;
  ImportMode mode = ImportMode::kHarvest;
  bool sample_was_read = true;
  ImportMapping mapping;
};
std::optional<Complaint<ImportControl>> CheckImport(const ImportForm& form);

// What reading a sample needs; nothing where a file is named.
std::optional<Complaint<ImportControl>> CheckSample(const std::string& file);

// What keeping a mapping under a name needs.
std::optional<Complaint<ImportControl>> CheckKeeping(const ImportMapping& mapping);

// The question that must be answered with OK before an import.
inline constexpr const char* kConsentQuestion =
    "To comply with the CAN-SPAM please confirm that you are importing a valid opt-in list.\r\n"
    "You must not import lists of purchased addresses which don't have given permission.";

// The question of a cancel while an import runs.
inline constexpr const char* kCancelImportQuestion = "Are you sure you want to cancel the import process?";

inline constexpr const char* kNoImportReport = "Report is not available for this session.";

}  // namespace quillcast::recipients

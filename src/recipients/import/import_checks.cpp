#include "recipients/import/import_checks.h"

namespace quillcast::recipients {

std::optional<Complaint<ImportControl>> CheckSample(const std::string& file) {
  if (file.empty()) return Complaint<ImportControl>{"Please specify a file.", ImportControl::kFile};
  return {};
}

std::optional<Complaint<ImportControl>> CheckKeeping(const ImportMapping& mapping) {
  if (!mapping.IsAllIgnore()) return {};
  return Complaint<ImportControl>{"Please select at least one field to import.", ImportControl::kMapping};
}

std::optional<Complaint<ImportControl>> CheckImport(const ImportForm& form) {
  if (auto no_file = CheckSample(form.file)) return no_file;
  if (!form.has_groups) return Complaint<ImportControl>{"There is no group to import.", ImportControl::kGroup};
  if (form.group.empty()) return Complaint<ImportControl>{"Please select a group.", ImportControl::kGroup};
  if (form.mode == ImportMode::kHarvest) return {};
  if (!form.sample_was_read) return Complaint<ImportControl>{"There is no data to import.", ImportControl::kGetData};
  if (auto no_field = CheckKeeping(form.mapping)) return no_field;
  if (form.mapping.source[kEmail] == kIgnore)
    return Complaint<ImportControl>{"Email Address field is required.", ImportControl::kMapping};
  return {};
}

}  // namespace quillcast::recipients

#include "app/close_step.h"

#include "platform/file_attributes.h"

namespace quillcast::app {
namespace {

namespace fs = std::filesystem;
using platform::Answer;

// Empty when the person cancels.
fs::path PickFileToSaveTo(platform::Prompts& prompts) {
  return prompts.PickSaveFile({.title = "Save", .filter = kDocumentFilter, .ask_before_overwriting = true});
}

// To the file, which may be empty or locked; false when the person cancels on the way.
Result<bool> SaveInto(EditedDocument& document, const fs::path& file, platform::Prompts& prompts) {
  if (file.empty()) return false;
  auto may_write = platform::MayWriteTo(file, prompts);
  if (!may_write || !*may_write) return may_write;
  const auto saved = document.SaveTo(file);
  if (!saved) return saved.error();
  return true;
}

void Remove(const fs::path& file) {
  IgnoreErrors(platform::Unlock(file));
  std::error_code ignored;
  fs::remove(file, ignored);
}

void RemoveTree(const fs::path& folder) {
  std::error_code ignored;
  for (auto entry = fs::recursive_directory_iterator(folder, ignored);
       !ignored && entry != fs::recursive_directory_iterator(); entry.increment(ignored)) {
    if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
  }
  fs::remove_all(folder, ignored);
}

void RemoveTemporaries(const fs::path& folder) {
  std::error_code ignored;
  for (auto entry = fs::directory_iterator(folder, ignored); !ignored && entry != fs::directory_iterator();
       entry.increment(ignored)) {
    if (entry->path().extension() == ".tmp" && entry->is_regular_file(ignored)) Remove(entry->path());
  }
}

}  // namespace

Result<SaveDecision> OfferToSave(EditedDocument& document, platform::Prompts& prompts) {
  if (!document.HasUnsavedChanges()) return SaveDecision::kGoOn;
  switch (prompts.AskOrCancel("Do you want to save the changes?")) {
    case Answer::kCancel:
      return SaveDecision::kStay;
    case Answer::kNo:
      return SaveDecision::kGoOn;
    case Answer::kYes:
      break;
  }
  const auto saved = Save(document, prompts);
  if (!saved) return saved.error();
  return *saved ? SaveDecision::kGoOn : SaveDecision::kStay;
}

Result<bool> Save(EditedDocument& document, platform::Prompts& prompts) {
  if (document.FileName().empty()) return SaveAs(document, prompts);
  return SaveInto(document, document.FileName(), prompts);
}

Result<bool> SaveAs(EditedDocument& document, platform::Prompts& prompts) {
  return SaveInto(document, PickFileToSaveTo(prompts), prompts);
}

Result<SaveDecision> AskBeforeClosing(EditedDocument& document, bool skip_save_prompt, platform::Prompts& prompts) {
  if (skip_save_prompt) return SaveDecision::kGoOn;
  return OfferToSave(document, prompts);
}

void CleanUpAtClose(const Folders& folders) {
  Remove(folders.PreviewMessage());
  Remove(folders.PreviewBody());
  // A folder that a variable names may hold anybody's files.
  if (folders.program_is_installed) RemoveTemporaries(folders.program);
  RemoveTree(folders.ImportBody());
}

}  // namespace quillcast::app

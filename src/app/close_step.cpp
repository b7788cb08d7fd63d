#include "app/close_step.h"

#include "platform/file_attributes.h"

namespace quillcast::app {
namespace {

namespace fs = std::filesystem;
using platform::Answer;

// Empty when the person cancels on the way.
fs::path PickFileToSaveTo(platform::Prompts& prompts) {
  fs::path file = prompts.PickSaveFile({.title = "Save", .filter = kDocumentFilter, .ask_before_overwriting = true});
  if (file.empty() || !platform::IsLocked(file)) return file;
  const Answer unlock = prompts.Ask("The output file is locked.\r\nWould you like to unlock it now?");
  if (unlock != Answer::kYes) return {};
  IgnoreErrors(platform::Unlock(file));  // the save tells when it did not help
  return file;
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
  const fs::path file = document.FileName().empty() ? PickFileToSaveTo(prompts) : document.FileName();
  if (file.empty()) return SaveDecision::kStay;
  const auto saved = document.SaveTo(file);
  if (!saved) return saved.error();
  return SaveDecision::kGoOn;
}

Result<void> SaveAs(EditedDocument& document, platform::Prompts& prompts) {
  const fs::path file = PickFileToSaveTo(prompts);
  return file.empty() ? Result<void>() : document.SaveTo(file);
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

#include "document/edited_document.h"

#include "platform/file_attributes.h"
#include "platform/text.h"

namespace quillcast::document {
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
  auto may_write = platform::MayWriteTo(file, document.OwnFiles(), prompts);
  if (!may_write || !*may_write) return may_write;
  const auto saved = document.SaveTo(file);
  if (!saved) return saved.error();
  return true;
}

}  // namespace

bool IsNamedAsDocument(const fs::path& file) {
  const std::string ending = platform::AsciiLower(file.extension().string());
  return ending == ".html" || ending == ".htm" || ending == ".txt";
}

bool IsNamedAsMessageFile(const fs::path& file) { return platform::AsciiLower(file.extension().string()) == ".eml"; }

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

}  // namespace quillcast::document

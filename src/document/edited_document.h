// The document that is being edited, as far as saving it goes: Save, Save As, and the question about unsaved changes.
#pragma once

#include <filesystem>

#include "platform/file_attributes.h"
#include "platform/prompts.h"
#include "platform/result.h"

namespace quillcast::document {

inline constexpr const char* kDocumentFilter = "HTML Files (*.html;*.htm)|*.html;*.htm|All Files (*.*)|*.*";

// Whether a file that is dropped on the window is one to open, by its ending: .html, .htm or .txt.
bool IsNamedAsDocument(const std::filesystem::path& file);
// Whether it is a message file, .eml, which is shown in a window of its own.
bool IsNamedAsMessageFile(const std::filesystem::path& file);

// The document that is being edited, as far as saving it goes.
class EditedDocument {
 public:
  virtual ~EditedDocument() = default;
  // Since it was opened, begun or saved last.
  virtual bool HasUnsavedChanges() const = 0;
  virtual std::filesystem::path FileName() const = 0;  // empty for a new document
  // From then on this is its file; after a failure all is as it was.
  virtual Result<void> SaveTo(const std::filesystem::path& file) = 0;
  // What it is never saved over.
  virtual platform::OwnFiles OwnFiles() const = 0;
};

// Whether what was asked for, which would do away with the document, is to go on.
enum class SaveDecision { kGoOn, kStay };

// Saves to the current file, or for a new document to one that is picked, after the question about a locked file. False
// when the person cancels on the way: nothing is saved then.
Result<bool> Save(EditedDocument& document, platform::Prompts& prompts);

// The same to a file that is picked in any case.
Result<bool> SaveAs(EditedDocument& document, platform::Prompts& prompts);

// Asks whether to save where there are unsaved changes, and saves. kStay when the person cancels on the way. After a
// save that fails the document stays too: the changes would be lost otherwise.
Result<SaveDecision> OfferToSave(EditedDocument& document, platform::Prompts& prompts);

// The same as OfferToSave unless the program closes itself for a shutdown after sending.
Result<SaveDecision> AskBeforeClosing(EditedDocument& document, bool skip_save_prompt, platform::Prompts& prompts);

}  // namespace quillcast::document

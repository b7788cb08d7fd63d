// The document in the editor as a file: opened, saved, and kept aside while it is not.
#pragma once

#include <QObject>
#include <filesystem>
#include <optional>
#include <string>

#include "app/close_step.h"
#include "app/folders.h"
#include "compose/body_file.h"
#include "compose/document_pictures.h"

namespace quillcast::compose {

class HtmlEditor;

class EditorDocument final : public app::EditedDocument {
 public:
  // A second after each change the document is also kept in "Autosave.htm" in the data folder, until it is saved or
  // dropped; beside it the folder that its relative pictures start from.
  EditorDocument(HtmlEditor& editor, app::Folders folders);
  ~EditorDocument() override;

  bool HasUnsavedChanges() const override;
  std::filesystem::path FileName() const override { return file_; }
  // Where relative references start from, also after it was saved elsewhere; empty for a document that came from
  // nowhere.
  std::filesystem::path BaseFolder() const;
  // What was not edited is written byte for byte as it was read, the rest in the encoding that it was read in. Pictures
  // of an imported body go along.
  Result<void> SaveTo(const std::filesystem::path& file) override;

  Result<void> Open(const std::filesystem::path& file);
  // A document without a name, which counts as unchanged.
  Result<void> StartNew(const std::string& html);

  // What earlier sessions, which did not end in good order, had not saved; one after the other.
  bool HasRecovered() const;
  Result<void> Recover();
  void DropRecovered() const;
  // The session ends in good order: nothing is kept aside.
  void DropAutosave() const;
  // What is not saved, at once, and nothing where all is. For a crash alone: where the disk is full, saving will tell.
  Result<void> KeepAside() const;
  Result<void> KeepAside(const std::string& html) const;

 private:
  Result<void> Show(const std::string& html, const std::filesystem::path& folder, bool modified = false);
  std::filesystem::path Autosave() const { return folders_.data / "Autosave.htm"; }
  // Of messages that were not saved there may be several: "Recovered.htm", "Recovered2.htm", ...; `number` from 1.
  std::filesystem::path Recovered(int number) const;
  int FirstRecovered() const;  // 0 for none

  HtmlEditor& editor_;
  QMetaObject::Connection snapshots_;
  app::Folders folders_;
  std::filesystem::path file_;
  TakenPictures taken_;           // beside that file
  std::optional<BodyFile> read_;  // as it stands in the file, until it is saved anew
};

}  // namespace quillcast::compose

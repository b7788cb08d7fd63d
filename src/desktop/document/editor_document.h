// The document in the editor as a file: opened, saved, and kept aside while it is not.
#pragma once

#include <QObject>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "document/body_file.h"
#include "document/document_pictures.h"
#include "document/drafts.h"
#include "document/edited_document.h"
#include "profile/folders.h"

namespace quillcast::desktop {

class HtmlEditor;

// The editor must outlive it.
class EditorDocument final : public document::EditedDocument {
 public:
  // Soon after each change the message is also kept as a draft. `add_fields` gives a draft what stands outside the
  // editor. What an earlier session left is offered from here on.
  EditorDocument(HtmlEditor& editor, profile::Folders folders, std::function<void(document::Draft&)> add_fields = {});
  ~EditorDocument() override;

  // Called whenever the document has another file: one was opened or saved, or, with an empty path, begun.
  void WhenNamed(std::function<void(const std::filesystem::path& file)> tell) { named_ = std::move(tell); }

  bool HasUnsavedChanges() const override;
  std::filesystem::path FileName() const override { return file_; }
  // Where relative references start from, also after it was saved elsewhere; empty for a document that came from
  // nowhere.
  std::filesystem::path BaseFolder() const;
  // Where its pictures may come from besides that folder, and what the person answered about others. A document that
  // takes its place starts without answers.
  const document::PicturePlaces& picture_places() const { return picture_places_; }
  void SetPicturePlaces(const document::PicturePlaces& places);
  // What was not edited is written byte for byte as it was read, the rest in the encoding that it was read in, which it
  // names. Pictures of an imported body go along.
  Result<void> SaveTo(const std::filesystem::path& file) override;
  platform::OwnFiles OwnFiles() const override { return folders_.OwnFiles(); }

  // In place of what is in the editor, without a question; work in it that is in no file becomes a draft. A text file
  // becomes HTML that has no file yet. What cannot be read, or kept, leaves the editor as it was.
  Result<void> Open(const std::filesystem::path& file);
  // A document without a name, which counts as unchanged. Nothing is kept of what was in the editor.
  Result<void> StartNew(const std::string& html);
  // In place of what is in the editor, as Open is, a letter that was filled in and is in no file: leaving it asks
  // nothing, but keeps it as a draft.
  Result<void> StartFrom(const std::string& letter);

  // A body that came out of a message file: a document without a name that is not saved yet, in place of what is in the
  // editor, which becomes the draft that is offered next, with all fields of the message; true says so. A letter that
  // was opened is kept too, of an empty message nothing. Its relative references start from `folder`.
  Result<bool> Import(const std::string& html, const std::filesystem::path& folder);

  // Keeps the message as a draft, at once. Nothing is kept of one that is not worth it. Where the editor does not
  // answer, what was seen last is kept, and that is the error.
  Result<void> KeepAside();
  // The same with the body as it was seen last: something else changed.
  Result<void> KeepFields();
  // The same for a crash alone; `WhenKept` hears of the first failure after a success, and when one is kept again.
  void KeepForACrash();
  void WhenKept(std::function<void(const Result<void>&)> tell) { kept_ = std::move(tell); }
  // The message as it is becomes one of the drafts that are offered; it stays in the editor.
  Result<void> SetAside();
  // Takes up the next of those: its body, unchanged where its file still holds it. The other fields are the caller's.
  // What was in the editor is set aside for it.
  Result<document::Draft> Recover();
  const document::Drafts& drafts() const { return drafts_; }
  // How often keeping it succeeded, in whichever way.
  std::uint64_t times_kept() const { return times_kept_; }

 private:
  document::Draft AsDraft() const;
  void Name(const std::filesystem::path& file);
  Result<void> SetAsideEarlier();
  void TellKept(const Result<void>& kept);
  Result<void> Leave();
  Result<void> ShowFile(const std::filesystem::path& file, document::BodyFile read);
  Result<void> Show(const std::string& html, const std::filesystem::path& folder, bool modified = false);
  HtmlEditor& editor_;
  QMetaObject::Connection snapshots_;
  profile::Folders folders_;
  std::function<void(document::Draft&)> add_fields_;
  std::function<void(const std::filesystem::path&)> named_;
  document::Drafts drafts_;
  bool has_set_aside_ = false;  // what an earlier session left, whose place is free from then on
  bool is_filled_in_ = false;   // the body is work although nothing was typed into it
  bool is_of_text_ = false;     // it shows a text file, which is none of its own
  bool told_not_kept_ = false;
  std::function<void(const Result<void>&)> kept_;
  std::uint64_t times_kept_ = 0;
  std::filesystem::path file_;
  document::PicturePlaces picture_places_;
  document::TakenPictures taken_;           // beside that file
  std::optional<document::BodyFile> read_;  // as it stands in the file, until it is saved anew
};

}  // namespace quillcast::desktop

#include "desktop/document/editor_document.h"

#include <fmt/format.h>

#include "desktop/document/html_editor.h"
#include "desktop/widgets/qt_text.h"
#include "document/body_source.h"
#include "document/declared_charset.h"
#include "document/message_document.h"
#include "platform/file_attributes.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

namespace fs = std::filesystem;

// With a paragraph to type into: a page takes no key in an empty body that was made while it could not be seen.
constexpr const char* kEmptyDocument = "<html><head></head><body><p><br></p></body></html>";

}  // namespace

EditorDocument::EditorDocument(HtmlEditor& editor, profile::Folders folders,
                               std::function<void(document::Draft&)> add_fields)
    : editor_(editor), folders_(std::move(folders)), add_fields_(std::move(add_fields)), drafts_(folders_.data) {
  IgnoreErrors(SetAsideEarlier());
  snapshots_ = QObject::connect(&editor, &HtmlEditor::Snapshot, &editor, [this] { KeepForACrash(); });
}

EditorDocument::~EditorDocument() { QObject::disconnect(snapshots_); }

bool EditorDocument::HasUnsavedChanges() const { return editor_.IsModified(); }

fs::path EditorDocument::BaseFolder() const {
  const fs::path base = PathFromQt(editor_.base().adjusted(QUrl::StripTrailingSlash).toLocalFile());
  return base == base.root_path() ? fs::path() : base;  // the root is that of a document that came from nowhere
}

void EditorDocument::SetPicturePlaces(const document::PicturePlaces& places) {
  picture_places_ = places;
  editor_.SetPicturePlaces(places);
  editor_.ReloadPictures();
}

// Nothing is kept, nor dropped, in place of what an earlier session left.
Result<void> EditorDocument::SetAsideEarlier() {
  if (has_set_aside_) return {};
  auto done = drafts_.SetAside();
  has_set_aside_ = static_cast<bool>(done);
  return done;
}

document::Draft EditorDocument::AsDraft() const {
  document::Draft draft{.is_changed = is_filled_in_ || editor_.is_known_modified(), .file = file_};
  draft.document.html = FromQt(editor_.seen());
  draft.document.base_folder = BaseFolder();
  if (add_fields_) add_fields_(draft);
  return draft;
}

Result<void> EditorDocument::KeepFields() {
  auto is_free = SetAsideEarlier();
  if (!is_free) return is_free;
  auto kept = drafts_.Keep(AsDraft());
  if (!kept) return kept;
  ++times_kept_;
  TellKept(kept);
  return kept;
}

void EditorDocument::KeepForACrash() {
  const auto kept = KeepFields();
  TellKept(kept);
  IgnoreErrors(kept);
}

void EditorDocument::TellKept(const Result<void>& kept) {
  const bool is_failure = !kept;
  if (std::exchange(told_not_kept_, is_failure) != is_failure && kept_) kept_(kept);
}

Result<void> EditorDocument::KeepAside() {
  const auto text = editor_.Text();
  auto kept = KeepFields();
  return text ? kept : text.error();
}

Result<void> EditorDocument::SetAside() {
  auto kept = KeepAside();
  return kept ? drafts_.SetAside() : kept;
}

void EditorDocument::Name(const fs::path& file) {
  file_ = file;
  if (named_) named_(file);
}

Result<void> EditorDocument::Show(const std::string& html, const fs::path& folder, bool modified) {
  // Whatever comes of it, the file of the document before is no longer that of what the editor holds.
  Name({});
  read_.reset();
  taken_.clear();
  is_filled_in_ = false;
  is_of_text_ = false;
  picture_places_ = document::PicturePlaces(folders_);
  editor_.SetPicturePlaces(picture_places_);
  const QUrl base = folder.empty() ? QUrl() : QUrl::fromLocalFile(PathToQt(folder) + '/');
  if (editor_.SetHtml(ToQt(html), base, modified)) return {};
  return Error{Failure::kInternal, "The editor did not take the document.", "Try it once more."};
}

// The other fields stand in the window still, so they alone are nothing that would be lost.
Result<void> EditorDocument::Leave() { return is_filled_in_ || HasUnsavedChanges() ? SetAside() : Result<void>(); }

Result<void> EditorDocument::Open(const fs::path& file) {
  auto read = document::ReadLetterFile(file);
  if (!read) return read.error();
  auto left = Leave();
  return left ? ShowFile(file, *std::move(read)) : left;
}

Result<void> EditorDocument::ShowFile(const fs::path& file, document::BodyFile read) {
  const bool is_text = platform::EqualsIgnoringAsciiCase(file.extension().string(), ".txt");
  const fs::path absolute = fs::absolute(file, IgnoreErrors());
  auto shown = Show(is_text ? document::HtmlFromText(read.text) : read.text, absolute.parent_path());
  if (!shown) return shown;
  // A text becomes a document of its own: saved under the text's name it would no longer be text.
  is_of_text_ = is_text;
  if (!is_text) {
    Name(absolute);
    read_ = std::move(read);
  }
  IgnoreErrors(KeepFields());  // nothing is changed yet
  return {};
}

Result<void> EditorDocument::StartNew(const std::string& html) {
  // A signature that the editor cannot take is told; the document is new all the same.
  auto editable = document::CheckEditable(html);
  auto shown = Show(html.empty() || !editable ? kEmptyDocument : html, {});
  if (!shown) return shown;
  IgnoreErrors(KeepFields());  // nothing is changed yet
  return editable;
}

Result<void> EditorDocument::StartFrom(const std::string& letter) {
  if (auto editable = document::CheckEditable(letter); !editable) return editable;
  auto left = Leave();
  if (!left) return left;
  auto started = StartNew(letter);
  if (!started) return started;
  is_filled_in_ = true;
  KeepForACrash();  // leaving it will tell
  return {};
}

Result<bool> EditorDocument::Import(const std::string& html, const fs::path& folder) {
  if (auto editable = document::CheckEditable(html); !editable) return editable.error();
  if (auto kept = KeepAside(); !kept) return kept.error();
  document::Draft before = AsDraft();
  before.is_changed = before.is_changed || is_of_text_;  // nothing else has it as it stands here
  const bool is_kept = before.IsWorthKeeping() || !before.file.empty();
  if (is_kept) {
    if (auto kept = drafts_.KeepWhole(before); !kept) return kept.error();
  }
  if (auto aside = drafts_.SetAside(document::Drafts::Turn::kNext); !aside) return aside.error();
  auto shown = Show(html, folder, true);
  return shown ? Result<bool>(is_kept) : shown.error();
}

Result<void> EditorDocument::SaveTo(const fs::path& file) {
  if (auto other = platform::CheckIsNotOwn(file, folders_.OwnFiles()); !other) return other;
  const auto text = editor_.Text();
  if (!text) return text.error();
  const std::string html = FromQt(*text);
  if (file != file_) taken_.clear();
  const auto saved = document::TakePicturesAlong(html, BaseFolder(), folders_.ImportBody(),
                                                 picture_places_.WithOwnFolder(BaseFolder()), file, taken_);
  if (!saved) return saved.error();
  const bool as_read = read_ && *saved == read_->text;
  const auto encoding = read_ ? read_->encoding : document::BodyEncoding::kUtf8;
  std::string bytes = as_read ? read_->bytes : document::EncodeBody(document::WithCharset(*saved, encoding), encoding);
  auto written = platform::ReplaceChosenFile(file, folders_.OwnFiles(), bytes);
  if (!written) return written;
  read_ = document::BodyFile{std::move(bytes), *saved, encoding};
  editor_.Saved();
  is_filled_in_ = false;
  is_of_text_ = false;
  Name(file);
  IgnoreErrors(KeepFields());  // it is saved
  return {};
}

Result<document::Draft> EditorDocument::Recover() {
  auto draft = drafts_.ReadOffered();
  if (!draft) return draft;
  const auto aside = SetAside();
  if (!aside) return aside.error();
  std::optional<document::BodyFile> file;  // where it holds the body
  if (!draft->file.empty() && !draft->is_changed) {
    auto read = document::ReadLetterFile(draft->file);
    const std::string& html = draft->document.html;
    draft->is_changed = !read || (read->text != html && read->text != document::WithCharset(html, read->encoding));
    if (!draft->is_changed) file = *std::move(read);
  }
  const auto shown = file ? ShowFile(draft->file, *std::move(file))
                          : Show(draft->document.html, draft->document.base_folder, draft->is_changed);
  if (!shown) return shown.error();
  const auto kept = drafts_.Keep(*draft);
  if (!kept) return kept.error();
  drafts_.DropOffered();
  return draft;
}

}  // namespace quillcast::desktop

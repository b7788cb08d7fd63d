#include "compose/ui/editor_document.h"

#include <fmt/format.h>

#include "compose/message_document.h"
#include "compose/ui/html_editor.h"
#include "platform/file.h"
#include "platform/text.h"
#include "platform/ui/qt_text.h"

namespace quillcast::compose {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLongestPath = 4096;
constexpr int kMostRecovered = 1000;

// With a paragraph to type into: a page takes no key in an empty body that was made while it could not be seen.
constexpr const char* kEmptyDocument = "<html><head></head><body><p><br></p></body></html>";

// Beside a document that was kept aside: where its relative references start from.
fs::path FolderFileOf(fs::path file) { return file.replace_extension(".folder"); }

void Remove(const fs::path& file) {
  std::error_code ignored;
  fs::remove(file, ignored);
}

// The file that a link leads to gets the new content, and a file that was there keeps its permissions.
Result<void> Replace(const fs::path& file, std::string_view bytes) {
  std::error_code failed;
  const fs::path target = fs::is_symlink(file, failed) ? fs::canonical(file, failed) : file;
  if (target.empty()) return platform::SystemError("write", file, failed.value());
  const auto before = fs::status(target, failed);
  auto written = platform::ReplaceFile(target, bytes);
  if (written && fs::exists(before)) fs::permissions(target, before.permissions(), failed);
  return written;
}

}  // namespace

EditorDocument::EditorDocument(HtmlEditor& editor, app::Folders folders)
    : editor_(editor), folders_(std::move(folders)) {
  std::error_code none_there;
  int number = 1;
  while (fs::exists(Recovered(number), none_there)) ++number;
  fs::rename(Autosave(), Recovered(number), none_there);
  if (!none_there) {
    Remove(FolderFileOf(Recovered(number)));
    fs::rename(FolderFileOf(Autosave()), FolderFileOf(Recovered(number)), none_there);
  }
  snapshots_ = QObject::connect(&editor, &HtmlEditor::Snapshot, &editor,
                                [this](const QString& html) { IgnoreErrors(KeepAside(platform::FromQt(html))); });
}

EditorDocument::~EditorDocument() { QObject::disconnect(snapshots_); }

bool EditorDocument::HasUnsavedChanges() const { return editor_.IsModified(); }

fs::path EditorDocument::BaseFolder() const {
  const fs::path base = platform::PathFromQt(editor_.base().adjusted(QUrl::StripTrailingSlash).toLocalFile());
  return base == base.root_path() ? fs::path() : base;  // the root is that of a document that came from nowhere
}

Result<void> EditorDocument::KeepAside(const std::string& html) const {
  Remove(FolderFileOf(Autosave()));
  const fs::path folder = BaseFolder();
  // The text counts more.
  if (!folder.empty()) IgnoreErrors(platform::ReplaceFile(FolderFileOf(Autosave()), folder.native()));
  return platform::ReplaceFile(Autosave(), html);
}

Result<void> EditorDocument::KeepAside() const {
  if (!HasUnsavedChanges()) return DropAutosave(), Result<void>();
  return KeepAside(platform::FromQt(editor_.Html()));
}

Result<void> EditorDocument::Show(const std::string& html, const fs::path& folder, bool modified) {
  // Whatever comes of it, the file of the document before is no longer that of what the editor holds.
  file_.clear();
  read_.reset();
  taken_.clear();
  const QUrl base = folder.empty() ? QUrl() : QUrl::fromLocalFile(platform::PathToQt(folder) + '/');
  if (editor_.SetHtml(platform::ToQt(html), base, modified)) return {};
  return Error{Failure::kInternal, "The editor did not take the document.", "Try it once more."};
}

Result<void> EditorDocument::Open(const fs::path& file) {
  auto read = ReadBodyFile(file);
  if (!read) return read.error();
  const bool is_text = platform::EqualsIgnoringAsciiCase(file.extension().string(), ".txt");
  std::error_code failed;
  const fs::path absolute = fs::absolute(file, failed);
  auto shown = Show(is_text ? HtmlFromText(read->text) : read->text, absolute.parent_path());
  if (!shown) return shown;
  // A text becomes a document of its own: saved under the text's name it would no longer be text.
  if (!is_text) {
    file_ = absolute;
    read_ = std::move(*read);
  }
  DropAutosave();
  return {};
}

Result<void> EditorDocument::StartNew(const std::string& html) {
  auto shown = Show(html.empty() ? kEmptyDocument : html, {});
  if (!shown) return shown;
  DropAutosave();
  return {};
}

Result<void> EditorDocument::SaveTo(const fs::path& file) {
  const std::string html = platform::FromQt(editor_.Html());
  if (file != file_) taken_.clear();
  const auto saved = TakePicturesAlong(html, BaseFolder(), folders_.ImportBody(), file, taken_);
  if (!saved) return saved.error();
  const bool as_read = read_ && *saved == read_->text;
  std::string bytes = as_read ? read_->bytes : EncodeBody(*saved, read_ ? read_->encoding : BodyEncoding::kUtf8);
  auto written = Replace(file, bytes);
  if (!written) return written;
  read_ = BodyFile{std::move(bytes), *saved, read_ ? read_->encoding : BodyEncoding::kUtf8};
  file_ = file;
  editor_.SetModified(false);
  DropAutosave();
  return {};
}

fs::path EditorDocument::Recovered(int number) const {
  return folders_.data / fmt::format("Recovered{}.htm", number == 1 ? "" : std::to_string(number));
}

int EditorDocument::FirstRecovered() const {
  std::error_code failed;
  for (int number = 1; number <= kMostRecovered; ++number) {
    if (fs::exists(Recovered(number), failed)) return number;
  }
  return 0;
}

bool EditorDocument::HasRecovered() const { return FirstRecovered() != 0; }

Result<void> EditorDocument::Recover() {
  const fs::path file = Recovered(FirstRecovered());
  const auto read = ReadBodyFile(file);
  if (!read) return read.error();
  const auto folder = platform::ReadFile(FolderFileOf(file), kLongestPath);
  auto shown = Show(read->text, folder ? *folder : "", true);
  if (!shown) return shown;
  auto kept = KeepAside(read->text);  // it is still not saved
  if (kept) DropRecovered();
  return kept;
}

void EditorDocument::DropRecovered() const {
  const fs::path file = Recovered(FirstRecovered());
  Remove(file);
  Remove(FolderFileOf(file));
}

void EditorDocument::DropAutosave() const {
  Remove(Autosave());
  Remove(FolderFileOf(Autosave()));
}

}  // namespace quillcast::compose

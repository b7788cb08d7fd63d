// The editor's pictures: those that are picked, dropped and pasted, and their copies.
#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "desktop/document/html_editor.h"
#include "desktop/document/picture_file.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/qt_text.h"
#include "document/edited_document.h"
#include "document/picture_choice.h"
#include "document/picture_sizes.h"

namespace quillcast::desktop {
namespace {

// What became of files that were picked, dropped or pasted.
struct TakenFiles {
  QString html;
  QStringList offered;
  std::vector<Error> troubles;
};

// What it is in HTML, once its copy is kept.
Result<QString> PictureElement(const PictureHead& head, const QString& folder, int room) {
  std::filesystem::path kept = head.file;
  if (!folder.isEmpty()) {
    const auto copy = KeepPicture(head, PathFromQt(folder));
    if (!copy) return copy.error();
    kept = *copy;
  }
  const auto size = document::FirstSize(head.size, room);
  const document::PictureChoice choice{.alternative = document::AlternativeFrom(head.file),
                                       .width = std::to_string(size.width),
                                       .height = std::to_string(size.height)};
  const QByteArray address = QUrl::fromLocalFile(PathToQt(kept)).toEncoded();
  return ToQt(document::PictureHtml(address.toStdString(), choice, head.size));
}

void TakeFile(const QString& file, const QString& folder, int room, TakenFiles& taken) {
  const auto head = ReadPictureHead(PathFromQt(file));
  if (head && head->is_large() && !head->moves) {
    taken.offered << file;
    return;
  }
  const auto element = head ? PictureElement(*head, folder, room) : Result<QString>(head.error());
  if (element) taken.html += *element;
  if (!element) taken.troubles.push_back(element.error());
}

// All of them, or the first of many.
QString OfFiles(const std::vector<Error>& troubles) {
  constexpr std::size_t kMostNamed = 3;
  QStringList lines;
  for (std::size_t i = 0; i < std::min(troubles.size(), kMostNamed); ++i) lines << InWords(troubles[i]);
  if (troubles.size() > kMostNamed)
    lines << HtmlEditor::tr("%1 more files were not inserted.").arg(troubles.size() - kMostNamed);
  return lines.join(' ');
}

}  // namespace

void HtmlEditor::InsertPictures(const QStringList& files) {
  coming_ << files;
  const int room = State().room;
  if (taking_->is_running() || coming_.isEmpty()) return;  // they are next, or were taken while the page was asked
  taking_->Start([this, files = std::exchange(coming_, {}), folder = picture_folder_, room,
                  load = loads_](const platform::CancelToken& cancel) -> std::function<void()> {
    TakenFiles taken;
    for (const QString& file : files) {
      if (cancel.Requested() == platform::Stop::kNone) TakeFile(file, folder, room, taken);
    }
    return [this, load, taken = std::move(taken)] {
      if (!taken.troubles.empty()) emit Trouble(OfFiles(taken.troubles));
      const bool is_here = load == loads_ && !read_;  // no other document, nor another view of this one
      if (is_here && !taken.offered.isEmpty()) emit PicturesOffered(taken.offered);
      if (is_here && !taken.html.isEmpty()) InsertHtml(taken.html);
      if (!coming_.isEmpty()) InsertPictures({});  // into whichever is there
    };
  });
}

// A document is opened, and takes the place of this one; there is one at a time. A message file is shown.
void HtmlEditor::TakeDropped(const QStringList& files) {
  const auto found = std::find_if(files.begin(), files.end(), [](const QString& file) {
    return document::IsNamedAsDocument(PathFromQt(file)) || document::IsNamedAsMessageFile(PathFromQt(file));
  });
  if (found != files.end()) {
    emit DocumentDropped(*found);
  } else {
    InsertPictures(files);
  }
}

void HtmlEditor::PastePicture() {
  const QImage picture = QGuiApplication::clipboard()->image();
  if (picture.isNull() || picture_folder_.isEmpty()) return;
  const QString file =
      picture_folder_ + "/pasted-" + QDateTime::currentDateTime().toString("yyyyMMdd-hhmmss-zzz") + ".png";
  if (!QDir().mkpath(picture_folder_) || !picture.save(file)) {
    emit Trouble(tr("The picture could not be kept as %1. Make room there, then paste it again.").arg(file));
    return;
  }
  QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner);
  InsertPictures({file});
}

}  // namespace quillcast::desktop

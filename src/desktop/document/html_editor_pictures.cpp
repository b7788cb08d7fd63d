// The editor's pictures: those that are picked, dropped and pasted, and their copies.
#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <algorithm>
#include <string>

#include "desktop/document/html_editor.h"
#include "desktop/document/picture_file.h"
#include "desktop/widgets/qt_text.h"
#include "document/edited_document.h"
#include "document/picture_choice.h"
#include "document/picture_sizes.h"

namespace quillcast::desktop {

// What it is in HTML; nothing for what cannot be kept.
QString HtmlEditor::PictureElement(const PictureHead& head, int room) {
  std::filesystem::path kept = head.file;
  if (!picture_folder_.isEmpty()) {
    const auto copy = KeepPicture(head, PathFromQt(picture_folder_));
    if (!copy) {
      emit Trouble(InWords(copy.error()));
      return {};
    }
    kept = *copy;
  }
  const auto size = document::FirstSize(head.size, room);
  const document::PictureChoice choice{.alternative = head.file.stem().string(),
                                       .width = std::to_string(size.width),
                                       .height = std::to_string(size.height)};
  const QByteArray address = QUrl::fromLocalFile(PathToQt(kept)).toEncoded();
  return ToQt(document::PictureHtml(address.toStdString(), choice, head.size));
}

bool HtmlEditor::InsertPictures(const QStringList& files) {
  QString html;
  QStringList offered;
  const int room = State().room;
  for (const QString& file : files) {
    const auto head = ReadPictureHead(PathFromQt(file));
    if (!head) {
      emit Trouble(InWords(head.error()));
    } else if (head->is_large() && !head->moves) {
      offered << file;
    } else {
      html += PictureElement(*head, room);
    }
  }
  if (!offered.isEmpty()) emit PicturesOffered(offered);
  return !html.isEmpty() && InsertHtml(html);
}

// A document is opened, and takes the place of this one; there is one at a time.
void HtmlEditor::TakeDropped(const QStringList& files) {
  const auto found = std::find_if(files.begin(), files.end(),
                                  [](const QString& file) { return document::IsNamedAsDocument(PathFromQt(file)); });
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

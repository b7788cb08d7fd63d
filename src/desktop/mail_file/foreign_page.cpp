#include "desktop/mail_file/foreign_page.h"

#include <QBuffer>
#include <QImageReader>
#include <QUrl>
#include <utility>

namespace quillcast::desktop {
namespace {

constexpr qint64 kMostPixels = 50'000'000;
constexpr int kWidest = 1600;

QImage Decode(const mail_file::ShownPicture& picture) {
  QByteArray bytes = QByteArray::fromRawData(picture.bytes.data(), static_cast<qsizetype>(picture.bytes.size()));
  QBuffer buffer(&bytes);
  QImageReader reader(&buffer, QByteArray::fromStdString(picture.type.substr(picture.type.find('/') + 1)));
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (!size.isValid() || qint64{size.width()} * size.height() > kMostPixels) return {};
  if (size.width() > kWidest) reader.setScaledSize(size.scaled(kWidest, size.height(), Qt::KeepAspectRatio));
  return reader.read();
}

}  // namespace

std::vector<QImage> DecodePictures(const std::vector<mail_file::ShownPicture>& pictures) {
  std::vector<QImage> images;
  images.reserve(pictures.size());
  for (const auto& picture : pictures) images.push_back(Decode(picture));
  return images;
}

ForeignPage::ForeignPage(const QString& html, std::vector<QImage> pictures, QObject* parent)
    : QTextDocument(parent), pictures_(std::move(pictures)) {
  setUndoRedoEnabled(false);
  setDefaultStyleSheet("a { color: #0b57d0 }");  // on paper, whatever the window's colours are
  setHtml(html);
}

QVariant ForeignPage::loadResource(int type, const QUrl& name) {
  bool is_number = false;
  const std::size_t place = name.scheme() == "cid" ? name.path().toULongLong(&is_number) : 0;
  if (type != ImageResource || !is_number || place >= pictures_.size()) return {};
  return pictures_[place];
}

}  // namespace quillcast::desktop

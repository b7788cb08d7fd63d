#include "desktop/mail_file/foreign_page.h"

#include <QBuffer>
#include <QImageReader>
#include <QUrl>
#include <utility>

#include "desktop/mail_file/page_sizes.h"

namespace quillcast::desktop {
namespace {

constexpr qint64 kMostPixels = qint64{16} * 1024 * 1024;  // of four bytes
constexpr int kWidest = 1600;

qint64 Pixels(const QSize& size) { return qint64{size.width()} * size.height(); }

// Photographs alone are made smaller while they are decoded; of others all pixels stand in memory at first.
QImage Decode(const mail_file::ShownPicture& picture, qint64 room) {
  QByteArray bytes = QByteArray::fromRawData(picture.bytes.data(), static_cast<qsizetype>(picture.bytes.size()));
  QBuffer buffer(&bytes);
  QImageReader reader(&buffer, QByteArray::fromStdString(picture.type.substr(picture.type.find('/') + 1)));
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  const QSize shown = size.width() > kWidest ? size.scaled(kWidest, size.height(), Qt::KeepAspectRatio) : size;
  const qint64 most = picture.type == "image/jpeg" ? 8 * kMostPixels : kMostPixels;
  if (!size.isValid() || Pixels(size) > most || Pixels(shown) > room) return {};
  if (shown != size) reader.setScaledSize(shown);
  return reader.read();
}

}  // namespace

std::vector<QImage> DecodePictures(const std::vector<mail_file::ShownPicture>& pictures,
                                   const platform::CancelToken& cancel) {
  std::vector<QImage> images(pictures.size());
  qint64 room = kMostPixels;
  for (std::size_t i = 0; i < pictures.size() && cancel.Requested() == platform::Stop::kNone; ++i) {
    images[i] = Decode(pictures[i], room);
    room -= Pixels(images[i].size());
  }
  return images;
}

ForeignPage::ForeignPage(const QString& html, std::vector<QImage> pictures, QObject* parent)
    : QTextDocument(parent), pictures_(std::move(pictures)) {
  setUndoRedoEnabled(false);
  // On paper, whatever the window's colours are.
  setDefaultStyleSheet(QStringLiteral("a { color: #%1 }").arg(mail_file::kLinkInk, 6, 16, QLatin1Char('0')));
  SetPage(html);
}

void ForeignPage::SetPage(const QString& html) {
  setHtml(html);
  PreferSizesToSteps(*this);
}

QVariant ForeignPage::loadResource(int type, const QUrl& name) {
  bool is_number = false;
  const std::size_t place = name.scheme() == "cid" ? name.path().toULongLong(&is_number) : 0;
  if (type != ImageResource || !is_number || place >= pictures_.size()) return {};
  return pictures_[place];
}

}  // namespace quillcast::desktop

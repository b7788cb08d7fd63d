#include "desktop/document/picture_file.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>
#include <algorithm>
#include <array>

#include "document/cut_picture.h"
#include "document/picture_copies.h"
#include "document/picture_kind.h"
#include "document/picture_sizes.h"
#include "platform/file.h"

namespace quillcast::desktop {
namespace {

namespace fs = std::filesystem;

struct Kind {
  std::string_view type;
  const char* reader;
};
// Those that mail programs show. No drawing: its reader takes minutes and gigabytes for a small file, and opens others.
constexpr auto kKinds = std::to_array<Kind>(
    {{"image/jpeg", "jpeg"}, {"image/png", "png"}, {"image/gif", "gif"}, {"image/webp", "webp"}, {"image/bmp", "bmp"}});
constexpr std::int64_t kMebibyte = 1024LL * 1024;
constexpr std::int64_t kMostBytesOfPixel = 8;  // a PNG of 16 bits a colour
constexpr int kShownSide = 400;                // pixels
constexpr int kQuality = 85;                   // of a JPEG: no difference is seen

QSize QtSize(profile::PixelSize size) { return {size.width, size.height}; }

// Null for a kind that is not shown. The bytes decide, before any reader sees them.
const char* ReaderFor(std::string_view bytes) {
  const auto type = document::PictureType(bytes);
  const auto* const kind =
      std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& row) { return row.type == type; });
  return kind == kKinds.end() ? nullptr : kind->reader;
}

// The toolkit's own limit is below what cameras make; ours is looked at before anything is decoded.
void AllowLargePictures() {
  static const bool is_done = [] {
    QImageReader::setAllocationLimit(static_cast<int>(document::kMostPixels * kMostBytesOfPixel / kMebibyte));
    return true;
  }();
  static_cast<void>(is_done);
}

// The content of a file and the reader for its kind, which is the only one that is asked.
struct OpenPicture {
  explicit OpenPicture(std::string content) : bytes(std::move(content)), kind(ReaderFor(bytes)) {
    if (kind == nullptr) return;
    AllowLargePictures();
    buffer.setData(QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size())));
    buffer.open(QIODevice::ReadOnly);
    reader.setDevice(&buffer);
    reader.setFormat(kind);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
  }
  std::string bytes;
  const char* kind;  // null: there is none
  QBuffer buffer;
  QImageReader reader;
};

Error NoPicture(const fs::path& file) {
  return {Failure::kBadData, Say("{} is no picture that can be shown in a message.", file.string()),
          "Choose a JPEG, PNG, GIF, WebP or BMP file."};
}

Error TooLarge(const fs::path& file) {
  return {Failure::kBadData, Say("{} is too large a picture.", file.string()),
          "Save it smaller with a program for pictures; 1,200 pixels in width are enough."};
}

Error Broken(const fs::path& file) {
  return {Failure::kBadData, Say("{} is damaged, or not whole.", file.string()), "Fetch it anew, or choose another."};
}

Result<PictureHead> HeadOf(OpenPicture& open, const fs::path& file) {
  const QSize stored = open.kind == nullptr ? QSize() : open.reader.size();
  if (stored.isEmpty()) return NoPicture(file);
  if (std::int64_t{stored.width()} * stored.height() > document::kMostPixels) return TooLarge(file);
  const auto turn = open.reader.transformation();
  PictureHead head{.file = file, .bytes = open.bytes.size()};
  head.size =
      document::Upright({stored.width(), stored.height()}, turn.testFlag(QImageIOHandler::TransformationRotate90));
  head.lies_turned = turn != QImageIOHandler::TransformationNone;
  head.moves = open.reader.supportsAnimation() && open.reader.imageCount() > 1;
  return head;
}

// As a photograph; what can be seen through stays so.
QByteArray Encoded(const QImage& picture, QString& ending) {
  const bool is_clear = picture.hasAlphaChannel();
  ending = is_clear ? ".png" : ".jpg";
  QByteArray bytes;
  QBuffer buffer(&bytes);
  QImageWriter writer(&buffer, is_clear ? "png" : "jpeg");
  if (!is_clear) writer.setQuality(kQuality);
  return writer.write(picture) ? bytes : QByteArray();
}

std::string NameWith(const fs::path& file, const QString& ending) {
  return file.stem().string() + ending.toStdString();
}

void MakeSmaller(PictureLook& look, const QImage& picture) {
  if (!look.head.is_large() || look.head.moves) return;
  look.smaller_size = document::NoWiderThan(look.head.size, document::kWidestPhotograph);
  QString ending;
  look.smaller =
      Encoded(picture.scaled(QtSize(look.smaller_size), Qt::IgnoreAspectRatio, Qt::SmoothTransformation), ending);
  if (static_cast<std::uint64_t>(look.smaller.size()) >= look.head.bytes) look.smaller.clear();
}

Result<fs::path> KeepBytes(const QByteArray& bytes, const std::string& name, const fs::path& folder) {
  return document::PictureCopies(folder).Keep(
      std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())), name);
}

}  // namespace

bool PictureHead::is_large() const { return document::IsLargePhotograph(size, bytes); }

Result<PictureHead> ReadPictureHead(const fs::path& file) {
  auto content = platform::ReadFile(file, document::kLongestPictureFile);
  if (!content) return content.error();
  OpenPicture open(std::move(*content));
  return HeadOf(open, file);
}

Result<PictureLook> LookAtPicture(const fs::path& file) {
  auto content = platform::ReadFile(file, document::kLongestPictureFile);
  if (!content) return content.error();
  OpenPicture open(std::move(*content));
  const auto head = HeadOf(open, file);
  if (!head) return head.error();
  if (document::IsCutShort(open.bytes)) return Broken(file);
  const QImage picture = open.reader.read();
  if (picture.isNull()) return Broken(file);
  PictureLook look{.head = *head, .shown = picture};
  if (std::max(picture.width(), picture.height()) > kShownSide)
    look.shown = picture.scaled(kShownSide, kShownSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  MakeSmaller(look, picture);
  return look;
}

Result<fs::path> KeepPicture(const PictureHead& head, const fs::path& folder) {
  if (!head.lies_turned) return document::PictureCopies(folder).Keep(head.file);
  auto content = platform::ReadFile(head.file, document::kLongestPictureFile);
  if (!content) return content.error();
  OpenPicture open(std::move(*content));
  const QImage picture = open.kind == nullptr ? QImage() : open.reader.read();
  QString ending;
  const QByteArray bytes = Encoded(picture, ending);
  if (bytes.isEmpty()) return Broken(head.file);
  return KeepBytes(bytes, NameWith(head.file, ending), folder);
}

Result<fs::path> KeepSmaller(const PictureLook& look, const fs::path& folder) {
  const bool is_png = look.smaller.startsWith("\x89PNG");
  return KeepBytes(look.smaller, NameWith(look.head.file, is_png ? ".png" : ".jpg"), folder);
}

}  // namespace quillcast::desktop

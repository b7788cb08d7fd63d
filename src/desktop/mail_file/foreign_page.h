// A stranger's page as a text view shows and prints it: nothing runs in it, and nothing is fetched for it.
#pragma once

#include <QImage>
#include <QTextDocument>
#include <vector>

#include "mail_file/shown_body.h"

namespace quillcast::desktop {

// The pictures of a body, decoded; no wider than a page takes. One that cannot be decoded, or is larger than 50
// megapixels, is empty. May be called on any thread.
std::vector<QImage> DecodePictures(const std::vector<mail_file::ShownPicture>& pictures);

class ForeignPage final : public QTextDocument {
  Q_OBJECT
 public:
  ForeignPage(const QString& html, std::vector<QImage> pictures, QObject* parent);

 protected:
  // The pictures that it was given; whatever else its HTML names is nothing.
  QVariant loadResource(int type, const QUrl& name) override;

 private:
  std::vector<QImage> pictures_;
};

}  // namespace quillcast::desktop

// A stranger's page as a text view shows and prints it: nothing runs in it, and nothing is fetched for it.
#pragma once

#include <QImage>
#include <QTextDocument>
#include <vector>

#include "mail_file/shown_body.h"

namespace quillcast::desktop {

// The pictures of a body, decoded; no wider than a page takes, 64 MiB in all. One that cannot be decoded, would take
// more than that by itself or finds no room is empty. May be called on any thread; what is left when it is cancelled
// is empty too.
std::vector<QImage> DecodePictures(const std::vector<mail_file::ShownPicture>& pictures,
                                   const platform::CancelToken& cancel);

class ForeignPage final : public QTextDocument {
  Q_OBJECT
 public:
  ForeignPage(const QString& html, std::vector<QImage> pictures, QObject* parent);
  void SetPage(const QString& html);

 protected:
  // The pictures that it was given; whatever else its HTML names is nothing.
  QVariant loadResource(int type, const QUrl& name) override;

 private:
  std::vector<QImage> pictures_;
};

}  // namespace quillcast::desktop

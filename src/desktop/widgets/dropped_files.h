// The files of this machine in what is dropped or pasted.
#pragma once

#include <QMimeData>
#include <QStringList>
#include <QUrl>

namespace quillcast::desktop {

// A file address with a host is another machine's, and left out.
inline QStringList DroppedFiles(const QMimeData* data) {
  QStringList files;
  for (const QUrl& url : data->urls()) {
    if (url.isLocalFile() && url.host().isEmpty()) files << url.toLocalFile();
  }
  return files;
}

}  // namespace quillcast::desktop

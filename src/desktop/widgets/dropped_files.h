// The files of this machine in what is dropped or pasted.
#pragma once

#include <QMimeData>
#include <QStringList>
#include <QUrl>
#include <algorithm>

namespace quillcast::desktop {

// A file address with a host is another machine's, and left out.
inline QStringList DroppedFiles(const QMimeData* data) {
  QStringList files;
  for (const QUrl& url : data->urls()) {
    if (url.isLocalFile() && url.host().isEmpty()) files << url.toLocalFile();
  }
  return files;
}

// Whether there are files at all, also of another machine.
inline bool HoldsFiles(const QMimeData* data) {
  const QList<QUrl> urls = data == nullptr ? QList<QUrl>() : data->urls();
  return std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); });
}

}  // namespace quillcast::desktop

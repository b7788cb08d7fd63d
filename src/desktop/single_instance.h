// One window for each user: a second start asks the first to come to the front, and ends.
#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

namespace quillcast::desktop {

class SingleInstance final : public QObject {
  Q_OBJECT
 public:
  // `folder` tells users, and profiles of one user, apart.
  explicit SingleInstance(const QString& folder);

  // True when there is another one, which now comes to the front. Else this is the first from here on.
  bool AnotherIsRunning();

 signals:
  void Raised();

 private:
  QString name_;    // of the socket, in the user's own runtime folder
  QLockFile lock_;  // decides between two that start at once
  QLocalServer server_;
};

}  // namespace quillcast::desktop

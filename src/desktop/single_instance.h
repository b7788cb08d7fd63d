// One window for each user: a second start asks the first to come to the front, and ends.
#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

namespace quillcast::desktop {

class SingleInstance final : public QObject {
  Q_OBJECT
 public:
  // `folder` tells users, and profiles of one user, apart.
  explicit SingleInstance(const QString& folder);

  // True when another one answered, which now comes to the front. Else this is the first from here on.
  bool AnotherIsRunning();

 signals:
  void Raised();

 private:
  QString name_;
  QLocalServer server_;
};

}  // namespace quillcast::desktop

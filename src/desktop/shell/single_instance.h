// One window for each user: a second start hands what it was started with to the first, which comes to the front, and
// ends.
#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QPointer>
#include <QString>
#include <string>
#include <utility>
#include <vector>

class QLocalSocket;

namespace quillcast::desktop {

class SingleInstance final : public QObject {
  Q_OBJECT
 public:
  // `folder` tells users, and profiles of one user, apart.
  explicit SingleInstance(const QString& folder);

  // True when there is another one, which now comes to the front with `arguments`: see profile/start_message.h. Else
  // this is the first from here on.
  bool AnotherIsRunning(const std::vector<std::string>& arguments);
  // From here on the signals come; who asked before is heard now. To be called once they are connected.
  void BeginHearing();
  // While it holds, a start is heard but neither answered nor asked for: the window may be about to go. A start whose
  // first one ends without an answer becomes the first.
  void Hold(bool holds);
  // The other one answered that it has them.
  bool handed_over() const { return handed_over_; }

 signals:
  void Raised();
  // Behind Raised, where it was started with something.
  void Asked(const std::vector<std::string>& arguments);

 private:
  bool HandOver(const std::vector<std::string>& arguments) const;
  bool IsFirst(int milliseconds);
  void Hear(QLocalSocket* socket);
  void Take(QLocalSocket* socket, const std::vector<std::string>& arguments);

  QString name_;    // of the socket, in the user's own runtime folder
  QLockFile lock_;  // decides between two that start at once
  QLocalServer server_;
  bool handed_over_ = false;
  bool holds_ = false;
  std::vector<std::pair<QPointer<QLocalSocket>, std::vector<std::string>>> held_;
};

}  // namespace quillcast::desktop

// What the system ends the program with, SIGTERM, SIGINT and SIGHUP, as a signal of the event loop.
#pragma once

#include <QObject>

namespace quillcast::desktop {

class Termination final : public QObject {
  Q_OBJECT
 public:
  // One at a time in a process.
  Termination();
  ~Termination() override;

 signals:
  void Asked();
};

}  // namespace quillcast::desktop

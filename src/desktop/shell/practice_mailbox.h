// Practice beside the main window: tells it, on its own thread, of each message that arrives.
#pragma once

#include <QObject>

#include "account/practice.h"
#include "profile/program.h"

namespace quillcast::desktop {

class PracticeMailbox final : public QObject {
  Q_OBJECT
 public:
  PracticeMailbox(const profile::Program& program, QObject* parent);

  account::Practice& practice() { return practice_; }
  Result<void> Begin();

 signals:
  void Arrived();  // a message

 private:
  account::Practice practice_;
};

}  // namespace quillcast::desktop

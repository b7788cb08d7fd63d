#include "desktop/shell/practice_mailbox.h"

#include <QMetaObject>

namespace quillcast::desktop {

PracticeMailbox::PracticeMailbox(const profile::Program& program, QObject* parent)
    : QObject(parent), practice_(program.settings, program.clock, program.folders.data / "Practice") {}

Result<void> PracticeMailbox::Begin() {
  return practice_.Begin([this] { QMetaObject::invokeMethod(this, [this] { emit Arrived(); }); });
}

}  // namespace quillcast::desktop

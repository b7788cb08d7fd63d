// F1, which opens the help at the topic of the window that it is pressed in.
#pragma once

#include <QObject>

#include "profile/folders.h"

class QWidget;

namespace quillcast::desktop {

// An event filter of the whole application.
class HelpKey final : public QObject {
 public:
  explicit HelpKey(const profile::Folders& folders) : folders_(folders) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  const profile::Folders& folders_;
};

// Where the screen has most room beside the other window, smaller where it must be: nothing of that is covered. To be
// called before `window` is shown; a display that lets no program place its windows takes no notice.
void PlaceBeside(QWidget& window, const QWidget& other);

}  // namespace quillcast::desktop

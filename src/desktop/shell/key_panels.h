// The panels of the status bar for the keys that lock: dimmed unless they hold.
#pragma once

#include <QObject>
#include <array>

class QLabel;
class QStatusBar;

namespace quillcast::desktop {

// The toolkit has no question for the state of the locks; each key that comes in from the system brings it along.
// Before the first one nothing is known, and nothing is lit. What is typed is always inserted, so "INS" holds.
class KeyPanels final : public QObject {
  Q_OBJECT
 public:
  explicit KeyPanels(QStatusBar* bar);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  std::array<QLabel*, 3> panels_;
};

}  // namespace quillcast::desktop

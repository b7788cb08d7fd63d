#include "desktop/shell/key_panels.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QStatusBar>

#include "desktop/widgets/qt_text.h"
#include "profile/main_window_contents.h"

namespace quillcast::desktop {
namespace {

// A lock, its panel, and its bit among the modifiers of a key as X and Wayland both count them.
struct Lock {
  std::size_t panel;
  Qt::Key key;
  quint32 bit;
};
constexpr auto kLocks = std::to_array<Lock>({{1, Qt::Key_CapsLock, 0x02}, {2, Qt::Key_NumLock, 0x10}});

}  // namespace

KeyPanels::KeyPanels(QStatusBar* bar) : QObject(bar) {
  for (std::size_t i = 0; i < panels_.size(); ++i) {
    panels_.at(i) = new QLabel(Translated(profile::kStatusPanels.at(i + 1)), bar);
    panels_.at(i)->setObjectName(QString("StatusPanel%1").arg(i + 2));
    bar->addPermanentWidget(panels_.at(i));
  }
  for (const Lock& lock : kLocks) panels_.at(lock.panel)->setEnabled(false);
  QCoreApplication::instance()->installEventFilter(this);
}

bool KeyPanels::eventFilter(QObject*, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return false;
  const auto* const key = static_cast<QKeyEvent*>(event);
  if (key->nativeScanCode() == 0) return false;  // made by a program, which knows nothing of the locks
  for (const Lock& lock : kLocks) {
    const bool was_on = (key->nativeModifiers() & lock.bit) != 0;  // before this key
    panels_.at(lock.panel)->setEnabled(key->key() == lock.key ? !was_on : was_on);
  }
  return false;
}

}  // namespace quillcast::desktop

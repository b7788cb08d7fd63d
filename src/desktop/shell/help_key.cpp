#include "desktop/shell/help_key.h"

#include <QDialog>
#include <QKeyEvent>
#include <QScreen>
#include <array>

#include "desktop/shell/help_form.h"
#include "desktop/widgets/help_place.h"

namespace quillcast::desktop {
namespace {

// The windows that must be reached at any moment.
bool MustStayUncovered(const QWidget& window) { return window.objectName() == "ShutDownForm"; }

// "Sending.htm#pace": what has the keyboard may belong to a part of the window that a part of the page tells of.
QString TopicFor(const QWidget& widget) {
  const QString topic = TopicOf(widget.window()->objectName()).value_or(kWelcomeTopic);
  for (const QWidget* part = &widget; part != nullptr && !part->isWindow(); part = part->parentWidget()) {
    const QString place = part->property(kHelpPlace).toString();
    if (!place.isEmpty()) return topic + '#' + place;
  }
  return topic;
}

}  // namespace

bool HelpKey::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_F1) return false;
  auto* widget = qobject_cast<QWidget*>(watched);
  auto* dialog = widget == nullptr ? nullptr : qobject_cast<QDialog*>(widget->window());
  if (dialog == nullptr || dialog->objectName() == "HelpForm") return false;
  // Never modal: over a countdown or a run it would keep from stopping them. The dialog's own window is open to it.
  HelpForm* help = HelpOver(*dialog);
  if (help == nullptr) {
    help = new HelpForm(folders_, TopicFor(*widget), dialog);
    if (MustStayUncovered(*dialog)) PlaceBeside(*help, *dialog);
  }
  BringToFront(*help);
  return true;
}

void PlaceBeside(QWidget& window, const QWidget& other) {
  const QRect screen = other.screen()->availableGeometry();
  const QRect taken = other.frameGeometry();
  const QSize borders = taken.size() - other.size();
  const QSize wanted = window.size() + borders;
  const std::array<QRect, 4> sides = {
      QRect(screen.topLeft(), QPoint(taken.left() - 1, screen.bottom())),
      QRect(QPoint(taken.right() + 1, screen.top()), screen.bottomRight()),
      QRect(screen.topLeft(), QPoint(screen.right(), taken.top() - 1)),
      QRect(QPoint(screen.left(), taken.bottom() + 1), screen.bottomRight()),
  };
  QRect best;
  for (const QRect& side : sides) {
    QRect place(QPoint(), wanted.boundedTo(side.size()));
    if (!side.isValid() || place.width() * place.height() <= best.width() * best.height()) continue;
    place.moveCenter(taken.center());
    place.moveLeft(qBound(side.left(), place.left(), side.right() + 1 - place.width()));
    place.moveTop(qBound(side.top(), place.top(), side.bottom() + 1 - place.height()));
    best = place;
  }
  if (best.isEmpty()) return;
  window.resize(best.size() - borders);
  window.move(best.topLeft());
}

}  // namespace quillcast::desktop

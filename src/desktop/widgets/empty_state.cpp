#include "desktop/widgets/empty_state.h"

#include <QEvent>

#include "desktop/widgets/look.h"

namespace quillcast::desktop {
namespace {

constexpr int kEmptyMargin = 16;  // pixels

}  // namespace

EmptyState::EmptyState(QAbstractScrollArea* area, const QString& text) : QLabel(text, area->viewport()), area_(area) {
  setObjectName("EmptyState");
  setTextFormat(Qt::PlainText);
  setWordWrap(true);
  setAlignment(Qt::AlignCenter);
  setMargin(kEmptyMargin);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  area->viewport()->installEventFilter(this);
  Place();
  TakeColour();
}

void EmptyState::Place() { setGeometry(area_->viewport()->rect()); }

void EmptyState::TakeColour() {
  QPalette colours = palette();
  const QColor quiet = QuietText(area_->palette());
  if (colours.color(QPalette::WindowText) == quiet) return;
  colours.setColor(QPalette::WindowText, quiet);
  setPalette(colours);
}

void EmptyState::Describe() { area_->setAccessibleDescription(isHidden() ? QString() : text()); }

bool EmptyState::event(QEvent* event) {
  const QEvent::Type type = event->type();
  if (type == QEvent::PaletteChange) TakeColour();
  if (type == QEvent::ShowToParent || type == QEvent::HideToParent) Describe();
  if (type == QEvent::Show) Place();
  return QLabel::event(event);
}

bool EmptyState::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize) Place();
  return QLabel::eventFilter(watched, event);
}

}  // namespace quillcast::desktop

#include "desktop/widgets/filter_box.h"

#include <QKeyEvent>

namespace quillcast::desktop {

FilterBox::FilterBox(const char* name, const QString& accessible_name, const QString& placeholder, QWidget* parent)
    : QLineEdit(parent) {
  setObjectName(name);
  setAccessibleName(accessible_name);
  setPlaceholderText(placeholder);
  setClearButtonEnabled(true);
}

void FilterBox::keyPressEvent(QKeyEvent* event) {
  const bool is_return = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  const bool empties = event->key() == Qt::Key_Escape && !text().isEmpty();
  if (empties) clear();
  if (!is_return && !empties) QLineEdit::keyPressEvent(event);  // a key that is handled goes no further
}

}  // namespace quillcast::desktop

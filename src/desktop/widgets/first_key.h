// Lets the keyboard choose the row that a list came to when it got the focus.
#pragma once

#include <QAbstractItemView>
#include <QKeyEvent>

namespace quillcast::desktop {

// The first arrow key in a list with nothing chosen chooses the current row. The list by itself would go on to the next
// one, and where there is one row alone there would be no way to choose it.
class FirstKey final : public QObject {
 public:
  explicit FirstKey(QAbstractItemView* list) : QObject(list), list_(list) { list->installEventFilter(this); }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    const bool is_step = key == Qt::Key_Down || key == Qt::Key_Up || key == Qt::Key_PageDown || key == Qt::Key_PageUp;
    const QModelIndex row = list_->currentIndex();
    if (!is_step || !row.isValid() || list_->selectionModel()->hasSelection()) return false;
    list_->selectionModel()->select(row, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    return true;
  }

 private:
  QAbstractItemView* list_;
};

}  // namespace quillcast::desktop

// Shows each text of a list in its own direction: a path or an English sentence in a window from right to left keeps
// its slashes and full stops where they are.
#pragma once

#include <QStyledItemDelegate>

namespace quillcast::desktop {

class OwnDirection final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  // It stands on the side of the window's direction all the same.
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->displayAlignment = QStyle::visualAlignment(option->direction, option->displayAlignment);
    option->direction = option->text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
    option->displayAlignment |= Qt::AlignAbsolute;
  }
};

}  // namespace quillcast::desktop

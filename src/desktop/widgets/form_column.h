// What a dialog, or a page of its tabs, consists of, from top to bottom; the Tab key goes the same way. For its rows
// and an example see FormGrid.
#pragma once

#include <QDialogButtonBox>
#include <QVBoxLayout>
#include <vector>

namespace quillcast::desktop {

class FormGrid;

// The Tab key will come to the widget after all that are in the window: for one that is about to be laid out there.
void LetFollow(QWidget* widget);

class FormColumn final : public QVBoxLayout {
 public:
  // With the margins of all dialogs.
  explicit FormColumn(QWidget* window);

  // For `place` see FormGrid.
  FormGrid* AddGrid(int place = 0);
  // In a box with a title.
  FormGrid* AddBox(const QString& title, int place = 0);
  // What is not a row: a list, a note, a line of text. With a `stretch` it takes the room that is left.
  template <typename Widget>
  Widget* Add(Widget* widget, int stretch = 0) {
    LetFollow(widget);
    addWidget(widget, stretch);
    return widget;
  }
  // Side by side; a null stands for the room that is left.
  void AddLine(const std::vector<QWidget*>& widgets, int stretch = 0);
  // The last row of a dialog, in the order of the desktop; OK accepts the dialog, Cancel and Close reject it. They
  // are named "OKButton", "CancelButton" and "CloseButton".
  QDialogButtonBox* AddButtons(QDialogButtonBox::StandardButtons buttons = QDialogButtonBox::NoButton);
};

}  // namespace quillcast::desktop

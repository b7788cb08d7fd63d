// A box above a list, which shows those rows alone that hold its text.
#pragma once

#include <QLineEdit>

namespace quillcast::desktop {

// The list follows what is typed, so Return presses nothing: the window's own button may send. Escape empties the box
// first, and closes the window where it is empty.
class FilterBox final : public QLineEdit {
  Q_OBJECT
 public:
  FilterBox(const char* name, const QString& accessible_name, const QString& placeholder, QWidget* parent);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace quillcast::desktop

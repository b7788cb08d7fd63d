// Two arrows, one above the other, that count the number in a box up and down; so do the arrow keys in the box.
#pragma once

#include <QWidget>

class QLineEdit;

namespace quillcast::desktop {

class UpDown final : public QWidget {
  Q_OBJECT
 public:
  // The bounds are inclusive. What stands in the box may lie outside of them, or be no number, until it is counted.
  UpDown(QLineEdit* box, int low, int high, QWidget* parent);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Step(int by);

  QLineEdit* box_;
  int low_;
  int high_;
};

}  // namespace quillcast::desktop

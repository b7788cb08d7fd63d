// Counts down after a run, then switches the machine off; Cancel alone stops it.
#pragma once

#include <QDialog>

class QLabel;
class QTimer;

namespace quillcast::sending {

class ShutDownForm final : public QDialog {
  Q_OBJECT
 public:
  explicit ShutDownForm(QWidget* parent);

  // A second has passed. Accepts when the label reads "0".
  void Tick();

 public slots:
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QTimer* timer_;
  QLabel* remaining_;  // holds the remaining time, as its text
};

}  // namespace quillcast::sending

// Counts down after a run, then has the machine switched off; Cancel alone stops it.
#pragma once

#include <QDialog>
#include <functional>

class QLabel;
class QTimer;

namespace quillcast::desktop {

class ShutDownForm final : public QDialog {
  Q_OBJECT
 public:
  // Counts from 60 at once, by a timer of its own. `switch_off` is called when the label reads "0", with the timer
  // stopped. Where it gives false, the countdown stays open at 0 until Cancel.
  ShutDownForm(std::function<bool()> switch_off, QWidget* parent);

 public slots:
  void reject() override;
  // However it ends, the timer stops with it.
  void done(int result) override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Tick();

  std::function<bool()> switch_off_;
  QTimer* timer_;
  QLabel* remaining_;  // holds the remaining time, as its text
};

}  // namespace quillcast::desktop

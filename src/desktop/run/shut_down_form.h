// Counts down after a run, then has the machine switched off; Cancel alone stops it.
#pragma once

#include <QDialog>
#include <functional>

#include "platform/cancel.h"
#include "platform/result.h"

class QLabel;
class QTimer;

namespace quillcast::desktop {

class BackgroundTask;

class ShutDownForm final : public QDialog {
  Q_OBJECT
 public:
  using SwitchOff = std::function<Result<void>(const platform::CancelToken&)>;
  // Counts from 60 at once, by a timer of its own. `switch_off` is called when the label reads "0", with the timer
  // stopped, on a thread of its own, for the system may take long to answer; Cancel is heard meanwhile. Where it fails,
  // the countdown stays open at 0 until Cancel.
  ShutDownForm(SwitchOff switch_off, QWidget* parent);
  ~ShutDownForm() override;

  // Called before the system is asked, and with what it said.
  std::function<void()> at_zero;
  std::function<void(const Result<void>&)> answered;

 public slots:
  void reject() override;
  // However it ends, the timer stops with it.
  void done(int result) override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Tick();
  void Cancel();
  void Answered(const Result<void>& off);

  SwitchOff switch_off_;
  bool cancelled_ = false;
  BackgroundTask* asks_;
  QTimer* timer_;
  QLabel* remaining_;  // holds the remaining time, as its text
};

}  // namespace quillcast::desktop

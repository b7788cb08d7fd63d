// Work that goes on beside a window: its bars, how fast it is and how long it will take, and the button that ends it.
//
//   progress_ = column->Add(new ProgressPanel("CancelButton", tr("Cancel"), this));
//   lines_ = progress_->AddBar("ProgressBar", tr("Lines read:"));
//   connect(progress_, &ProgressPanel::Pressed, this, [this] { task_->Cancel(); });
//
// The work itself is a BackgroundTask's.
#pragma once

#include <QWidget>

class QGridLayout;
class QHBoxLayout;
class QPushButton;

namespace quillcast::desktop {

class CountBar;
class StatusLine;

class ProgressPanel final : public QWidget {
  Q_OBJECT
 public:
  ProgressPanel(const char* button, const QString& text, QWidget* parent);

  // Below those that are there.
  CountBar* AddBar(const char* name, const QString& caption);
  // "12 messages a second, 3 minutes left", or what it waits for, which may be long; in the "RateLabel".
  void SayRate(const QString& rate);
  // For so many lines of that, so that nothing moves as they come and go.
  void KeepRoom(int lines);
  // Before that button, on its line: the one that begins the work, where it has one of its own.
  void AddBeside(QPushButton* button);
  // Beside the last bar, where the panel shares its line with something else; then no rate is said.
  void PutButtonBesideBar();
  // A window may let it say what pressing it does at the time.
  QPushButton* button() const { return button_; }

 signals:
  void Pressed();

 private:
  QGridLayout* bars_;
  QHBoxLayout* below_;
  StatusLine* rate_;
  QPushButton* button_;
};

}  // namespace quillcast::desktop

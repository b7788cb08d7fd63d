#include "desktop/run/shut_down_form.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/form_column.h"

namespace quillcast::desktop {
namespace {

constexpr int kSecond = 1000;  // milliseconds

}  // namespace

ShutDownForm::ShutDownForm(SwitchOff switch_off, QWidget* parent)
    : QDialog(parent),
      switch_off_(std::move(switch_off)),
      asks_(new BackgroundTask(this)),
      timer_(new QTimer(this)),
      remaining_(new QLabel("60", this)) {
  setObjectName("ShutDownForm");
  setWindowTitle("Shut Down");
  setWindowFlag(Qt::WindowCloseButtonHint, false);  // it would do nothing
  remaining_->setObjectName("RemainingLabel");
  QFont bold = remaining_->font();
  bold.setBold(true);
  remaining_->setFont(bold);
  auto* cancel = new QPushButton(tr("Cancel"), this);
  cancel->setObjectName("CancelButton");
  cancel->setDefault(true);
  auto* column = new FormColumn(this);
  column->Add(new QLabel(tr("Quillcast is going to shut down the system in 60 seconds."), this));
  column->Add(new QLabel(tr("If you do not want to shut down Windows, please press the Cancel button."), this));
  column->AddLine({new QLabel(tr("Remaining Time :"), this), remaining_, new QLabel(tr("Seconds."), this), nullptr});
  column->AddLine({nullptr, cancel});
  connect(cancel, &QPushButton::clicked, this, &ShutDownForm::Cancel);
  connect(timer_, &QTimer::timeout, this, &ShutDownForm::Tick);
  timer_->setObjectName("SecondTimer");
  timer_->setTimerType(Qt::PreciseTimer);  // the others may be late by a twentieth, which adds up
  timer_->start(kSecond);
}

ShutDownForm::~ShutDownForm() = default;

void ShutDownForm::Tick() {
  remaining_->setText(QString::number(remaining_->text().toInt() - 1));
  if (remaining_->text() != "0") return;
  timer_->stop();
  if (at_zero) at_zero();
  asks_->Start([this, switch_off = switch_off_](const platform::CancelToken& cancel) {
    const auto off = switch_off(cancel);
    return [this, off] { Answered(off); };
  });
}

// Where the system is being asked, the answer tells whether it was in time.
void ShutDownForm::Cancel() {
  cancelled_ = true;
  if (asks_->is_running()) return asks_->Cancel();
  done(Rejected);
}

void ShutDownForm::Answered(const Result<void>& off) {
  if (answered) answered(off);
  if (off) return accept();
  if (cancelled_) done(Rejected);
}

void ShutDownForm::done(int result) {
  timer_->stop();
  QDialog::done(result);
}

// Neither Alt+F4 nor Escape ends the countdown: what stops it must be meant.
void ShutDownForm::reject() {}
void ShutDownForm::closeEvent(QCloseEvent* event) { event->setAccepted(!isVisible()); }
void ShutDownForm::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape) QDialog::keyPressEvent(event);
}

}  // namespace quillcast::desktop

#include "desktop/recipients/work_panel.h"

#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "desktop/widgets/progress_panel.h"

namespace quillcast::desktop {
namespace {

constexpr int kBetweenLooks = 50;  // milliseconds

}  // namespace

WorkPanel::WorkPanel(const profile::Program& program, QWidget* parent)
    : QWidget(parent),
      program_(program),
      task_(new BackgroundTask(this)),
      tick_(new QTimer(this)),
      panel_(new ProgressPanel("CancelButton", tr("Cancel"), this)),
      bar_(panel_->AddBar("ProgressBar", tr("Progress:"))) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(panel_);
  // It keeps its place: nothing moves when work begins and ends.
  QSizePolicy policy = panel_->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  panel_->setSizePolicy(policy);
  panel_->hide();
  panel_->button()->setEnabled(false);
  panel_->button()->setAutoDefault(false);
  tick_->setInterval(kBetweenLooks);
  connect(tick_, &QTimer::timeout, this, &WorkPanel::ShowCounts);
  connect(panel_, &ProgressPanel::Pressed, this, &WorkPanel::Press);
}

WorkPanel::~WorkPanel() = default;

void WorkPanel::AddBeside(QPushButton* button) {
  closes_ = true;
  panel_->AddBeside(button);
  panel_->show();
  panel_->button()->setEnabled(true);
  panel_->button()->setAutoDefault(true);  // a dialog's own: Return presses it where the keyboard is on it
}

void WorkPanel::ShareLine() { panel_->PutButtonBesideBar(); }

QPushButton* WorkPanel::button() const { return panel_->button(); }

void WorkPanel::Press() { is_working() ? Cancel() : emit Closing(); }

void WorkPanel::Cancel() {
  was_cancelled_ = true;
  task_->Cancel();
}

void WorkPanel::Begin() {
  was_cancelled_ = false;
  counts_ = std::make_shared<SharedCount>();
  panel_->show();
  panel_->button()->setEnabled(true);
  tick_->start();
  emit Started();
}

void WorkPanel::End() {
  tick_->stop();
  bar_->Count(0, 1);
  panel_->setVisible(closes_);
  panel_->button()->setEnabled(closes_);
  emit Ended();
}

void WorkPanel::ShowCounts() {
  if (counts_->total > 0) bar_->Count(*counts_);
}

}  // namespace quillcast::desktop

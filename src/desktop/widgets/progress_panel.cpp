#include "desktop/widgets/progress_panel.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "desktop/widgets/breakable.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

constexpr int kNarrowest = 120;        // pixels: the button keeps its place whatever it says
constexpr int kLongestWordOfBar = 30;  // beside the buttons

}  // namespace

ProgressPanel::ProgressPanel(const char* button, const QString& text, QWidget* parent)
    : QWidget(parent),
      bars_(new QGridLayout()),
      below_(new QHBoxLayout()),
      rate_(new StatusLine(this, "RateLabel")),
      button_(new QPushButton(text, this)) {
  button_->setObjectName(button);
  button_->setMinimumWidth(kNarrowest);
  bars_->setColumnStretch(1, 1);
  below_->addWidget(rate_, 1);
  below_->addWidget(button_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addLayout(bars_);
  column->addLayout(below_);
  connect(button_, &QPushButton::clicked, this, &ProgressPanel::Pressed);
}

CountBar* ProgressPanel::AddBar(const char* name, const QString& caption) {
  auto* bar = new CountBar(name, this);
  bar->setAccessibleName(QString(caption).remove(':'));
  const int row = bars_->rowCount();
  bars_->addWidget(new QLabel(caption, this), row, 0);
  bars_->addWidget(bar, row, 1);
  return bar;
}

void ProgressPanel::AddBeside(QPushButton* button) {
  LetFollow(button);
  below_->insertWidget(below_->count() - 1, button);
  setTabOrder(button, button_);
}

void ProgressPanel::PutButtonBesideBar() {
  rate_->hide();
  bars_->addWidget(button_, bars_->rowCount() - 1, 2);
}

void ProgressPanel::KeepRoom(int lines) { rate_->KeepRoom(lines); }

void ProgressPanel::SayRate(const QString& rate) { rate_->Say(Breakable(rate, kLongestWordOfBar)); }

}  // namespace quillcast::desktop

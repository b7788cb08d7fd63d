#include "desktop/run/history_manager_form.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <numeric>

#include "desktop/widgets/first_key.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

enum Order : int { kAsListed, kNewestFirst, kOldestFirst, kBySubject };

// The two colours of the rows.
const QColor kLightRow(255, 255, 192);
const QColor kDarkRow(255, 200, 0);

constexpr std::size_t kSubjectPlace = 20;  // in "07-03-2026_09-05-07_Hello.txt"

// "2026-07-03_09-05-07"; empty for a name of another shape, which counts as older than all.
std::string MomentOf(const run::HistoryRow& row) {
  const std::string& file = row.file;
  if (file.size() < kSubjectPlace || file[10] != '_' || file[19] != '_') return {};
  return file.substr(6, 4) + "-" + file.substr(0, 5) + file.substr(10, 9);
}

std::string SubjectOf(const run::HistoryRow& row) {
  return MomentOf(row).empty() ? row.file : row.file.substr(kSubjectPlace);
}

}  // namespace

HistoryManagerForm::HistoryManagerForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      grid_(new QListWidget(this)),
      filter_(new QLineEdit(this)),
      order_(new QComboBox(this)),
      status_(new QLabel(this)),
      open_log_(new QPushButton(tr("Open &Log"), this)),
      open_message_(new QPushButton(tr("Open &Message"), this)),
      clear_(new QPushButton(tr("Clear &History…"), this)) {
  setObjectName("HistoryManagerForm");
  setWindowTitle(tr("History Manager"));
  resize(720, 440);
  grid_->setObjectName("HistoryGrid");
  grid_->setAccessibleName(tr("Runs"));
  grid_->setUniformItemSizes(true);
  new FirstKey(grid_);
  filter_->setObjectName("FilterTextBox");
  filter_->setPlaceholderText(tr("Filter"));
  filter_->setAccessibleName(tr("Filter"));
  filter_->setClearButtonEnabled(true);
  order_->setObjectName("OrderComboBox");
  order_->setAccessibleName(tr("Order"));
  order_->addItems({tr("As listed"), tr("Newest first"), tr("Oldest first"), tr("By subject")});
  open_log_->setObjectName("OpenLogButton");
  open_log_->setDefault(true);
  open_message_->setObjectName("OpenMessageButton");
  clear_->setObjectName("ClearHistoryButton");
  auto* close = new QPushButton(tr("Close"), this);
  close->setObjectName("CloseButton");
  status_->setTextFormat(Qt::PlainText);
  status_->setWordWrap(true);

  auto* above = new QHBoxLayout();
  above->addWidget(filter_, 1);
  above->addWidget(order_);
  auto* below = new QHBoxLayout();
  below->addWidget(open_log_);
  below->addWidget(open_message_);
  below->addStretch(1);
  below->addWidget(clear_);
  below->addWidget(close);
  auto* column = new QVBoxLayout(this);
  column->addLayout(above);
  column->addWidget(grid_, 1);
  column->addWidget(status_);
  column->addLayout(below);

  connect(filter_, &QLineEdit::textChanged, this, &HistoryManagerForm::Arrange);
  connect(order_, &QComboBox::currentIndexChanged, this, &HistoryManagerForm::Arrange);
  connect(grid_, &QListWidget::itemSelectionChanged, this, &HistoryManagerForm::EnableButtons);
  // Return goes to the default button; a list hands it on after acting on it, so acting here too would open it twice.
  connect(grid_, &QListWidget::itemDoubleClicked, this, [this] { Open(run::OpenLog); });
  connect(open_log_, &QPushButton::clicked, this, [this] { Open(run::OpenLog); });
  connect(open_message_, &QPushButton::clicked, this, [this] { Open(run::OpenMessage); });
  connect(clear_, &QPushButton::clicked, this, &HistoryManagerForm::Clear);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  Fill();
  grid_->setFocus();
}

void HistoryManagerForm::Fill() {
  auto rows = run::ListHistory(program_.folders.History());
  rows_ = rows ? std::move(*rows) : std::vector<run::HistoryRow>();
  Arrange();
  if (!rows) status_->setText(InWords(rows.error()));
}

void HistoryManagerForm::Arrange() {
  std::vector<std::size_t> places(rows_.size());
  std::iota(places.begin(), places.end(), 0);
  const auto by = [&](auto key, bool descending) {
    std::stable_sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) {
      return descending ? key(rows_[b]) < key(rows_[a]) : key(rows_[a]) < key(rows_[b]);
    });
  };
  if (order_->currentIndex() == kNewestFirst) by(MomentOf, true);
  if (order_->currentIndex() == kOldestFirst) by(MomentOf, false);
  if (order_->currentIndex() == kBySubject) by(SubjectOf, false);
  grid_->clear();
  for (const std::size_t place : places) {
    const QString text = ToQt(rows_[place].text);
    if (!text.contains(filter_->text(), Qt::CaseInsensitive)) continue;
    auto* item = new QListWidgetItem(text, grid_);
    item->setData(Qt::UserRole, static_cast<qulonglong>(place));
    item->setBackground(grid_->count() % 2 == 1 ? kLightRow : kDarkRow);
    item->setForeground(Qt::black);
  }
  status_->setText(rows_.empty()         ? tr("No run has been made yet; each one is kept here.")
                   : grid_->count() == 0 ? tr("No run matches the filter.")
                                         : tr("%1 of %2 shown.").arg(grid_->count()).arg(rows_.size()));
  EnableButtons();
}

void HistoryManagerForm::EnableButtons() {
  const bool chosen = Chosen() != nullptr;
  open_log_->setEnabled(chosen);
  open_message_->setEnabled(chosen);
}

const run::HistoryRow* HistoryManagerForm::Chosen() const {
  const auto items = grid_->selectedItems();
  return items.isEmpty() ? nullptr : &rows_.at(items.first()->data(Qt::UserRole).toULongLong());
}

void HistoryManagerForm::Open(Opener opener) {
  const run::HistoryRow* row = Chosen();
  if (row == nullptr) return;
  const auto opened = opener(program_.folders.History(), *row, program_.desktop, program_.prompts);
  if (!opened) status_->setText(InWords(opened.error()));
}

void HistoryManagerForm::Clear() {
  const auto cleared = run::ClearHistory(program_.folders.History(), program_.prompts);
  if (cleared.clearing != run::Clearing::kCleared) return;
  QStringList sentences = {
      Counted(static_cast<std::int64_t>(cleared.deleted), tr("1 file was deleted."), tr("%1 files were deleted."))};
  for (const auto& sentence : run::WhatStayed(cleared)) sentences << ToQt(sentence);
  const auto done = run::WhatFailed(cleared, program_.folders.History());
  if (!done) sentences << InWords(done.error());
  cleared_ = sentences.join(' ');
  accept();
}

}  // namespace quillcast::desktop

#include "desktop/run/results_view.h"

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/widgets/first_key.h"
#include "desktop/widgets/qt_text.h"
#include "platform/file_attributes.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

enum Column : int { kPosition, kAddress, kState, kDetail };

}  // namespace

void ResultsModel::SetFilter(run::RunResults::Filter filter) {
  beginResetModel();
  filter_ = std::move(filter);
  rows_ = results_.Matching(filter_, 0);
  seen_ = results_.size();
  endResetModel();
}

void ResultsModel::Grow() {
  const auto more = results_.Matching(filter_, seen_);
  seen_ = results_.size();
  if (more.empty()) return;
  const int first = static_cast<int>(rows_.size());
  beginInsertRows({}, first, first + static_cast<int>(more.size()) - 1);
  rows_.insert(rows_.end(), more.begin(), more.end());
  endInsertRows();
}

int ResultsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant ResultsModel::data(const QModelIndex& index, int role) const {
  if (role == Qt::TextAlignmentRole && index.column() == kPosition) {
    return QVariant::fromValue(Qt::Alignment(Qt::AlignRight | Qt::AlignVCenter));
  }
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
  const run::ResultRow row = results_.At(rows_.at(static_cast<std::size_t>(index.row())));
  switch (index.column()) {
    case kPosition:
      return QLocale::c().toString(static_cast<qlonglong>(row.position));
    case kAddress:
      return ToQt(platform::Printable(row.address));
    case kState:
      return tr(run::Name(row.state));
    default:
      return ToQt(row.detail);
  }
}

QVariant ResultsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  const std::array<QString, 4> texts = {tr("#"), tr("Recipient"), tr("Result"), tr("Why")};
  return texts.at(static_cast<std::size_t>(section));
}

ResultsView::ResultsView(const run::RunResults& results, platform::Prompts& prompts, QWidget* parent)
    : QWidget(parent),
      results_(results),
      prompts_(prompts),
      model_(new ResultsModel(results, this)),
      states_(new QComboBox(this)),
      text_(new QLineEdit(this)),
      table_(new QTableView(this)),
      count_(new QLabel(this)) {
  states_->setObjectName("ResultStateComboBox");
  states_->setAccessibleName(tr("Which results"));
  states_->addItem(tr("Everybody"));
  states_->addItem(tr("Who did not get it"));
  for (const auto state : {run::ResultState::kSent, run::ResultState::kRefused, run::ResultState::kDeferred,
                           run::ResultState::kFailed, run::ResultState::kUnknown, run::ResultState::kNotTried}) {
    states_->addItem(tr(run::Name(state)), static_cast<int>(state));
  }
  text_->setObjectName("ResultTextBox");
  text_->setAccessibleName(tr("Filter"));
  text_->setPlaceholderText(tr("Filter by address or reason"));
  text_->setClearButtonEnabled(true);
  table_->setObjectName("ResultsTable");
  table_->setAccessibleName(tr("Results"));
  table_->setModel(model_);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setAlternatingRowColors(true);
  table_->setShowGrid(false);
  table_->setWordWrap(false);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
  table_->horizontalHeader()->setStretchLastSection(true);
  table_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  table_->setTabKeyNavigation(false);
  new FirstKey(table_);
  table_->setColumnWidth(kPosition, 70);
  table_->setColumnWidth(kAddress, 230);
  table_->setColumnWidth(kState, 90);
  auto* copy = new QPushButton(tr("Cop&y"), this);
  copy->setObjectName("CopyResultsButton");
  auto* save = new QPushButton(tr("Sa&ve…"), this);
  save->setObjectName("SaveResultsButton");

  auto* above = new QHBoxLayout();
  above->addWidget(states_);
  above->addWidget(text_, 1);
  auto* below = new QHBoxLayout();
  below->addWidget(count_, 1);
  below->addWidget(copy);
  below->addWidget(save);
  auto* column = new QVBoxLayout(this);
  column->addLayout(above);
  column->addWidget(table_, 1);
  column->addLayout(below);
  connect(states_, &QComboBox::currentIndexChanged, this, &ResultsView::Filter);
  connect(text_, &QLineEdit::textChanged, this, &ResultsView::Filter);
  connect(copy, &QPushButton::clicked, this, &ResultsView::Copy);
  connect(save, &QPushButton::clicked, this, &ResultsView::Save);
  ShowCount();
}

void ResultsView::Grow() {
  model_->Grow();
  ShowCount();
}

void ResultsView::Filter() {
  run::RunResults::Filter filter;
  if (states_->currentData().isValid()) filter.state = static_cast<run::ResultState>(states_->currentData().toInt());
  filter.unsent_only = states_->currentIndex() == 1;
  filter.text = FromQt(text_->text());
  model_->SetFilter(std::move(filter));
  ShowCount();
}

void ResultsView::ShowCount() {
  count_->setText(tr("%1 of %2 results")
                      .arg(QLocale::c().toString(static_cast<qulonglong>(model_->rows().size())),
                           QLocale::c().toString(static_cast<qulonglong>(results_.size()))));
}

// The selected rows, or all that the filter shows when none is.
void ResultsView::Copy() {
  std::vector<std::uint32_t> rows;
  for (const auto& index : table_->selectionModel()->selectedRows()) {
    rows.push_back(model_->rows()[static_cast<std::size_t>(index.row())]);
  }
  std::sort(rows.begin(), rows.end());
  QGuiApplication::clipboard()->setText(ToQt(results_.AsText(rows.empty() ? model_->rows() : rows)));
}

void ResultsView::Save() {
  const auto file = prompts_.PickSaveFile(
      {.title = "Save", .filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*", .ask_before_overwriting = true});
  if (file.empty()) return;
  const auto may_write = platform::MayWriteTo(file, prompts_);
  if (may_write && !*may_write) {
    count_->setText(tr("%1 is locked and was left as it is.").arg(PathToQt(file)));
    return;
  }
  const auto saved = may_write ? platform::ReplaceChosenFile(file, results_.AsText(model_->rows())) : may_write.error();
  count_->setText(saved ? tr("Saved as %1.").arg(PathToQt(file)) : InWords(saved.error()));
}

}  // namespace quillcast::desktop

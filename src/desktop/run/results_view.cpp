#include "desktop/run/results_view.h"

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLocale>
#include <QPushButton>
#include <algorithm>
#include <utility>

#include "desktop/widgets/filter_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "run/run_words.h"

namespace quillcast::desktop {
namespace {

enum ResultColumn : int { kPosition, kAddress, kState, kDetail };

}  // namespace

ResultsView::ResultsView(const run::RunResults& results, run::NamedMailing mailing, const profile::Program& program,
                         QWidget* parent)
    : QWidget(parent),
      results_(results),
      mailing_(std::move(mailing)),
      program_(program),
      states_(new QComboBox(this)),
      text_(new FilterBox("ResultTextBox", tr("Filter"), tr("Filter by address or reason"), this)),
      table_(new RowList(
          "ResultsTable", tr("Results"), {{tr("#"), 8, true}, {tr("Recipient"), 32}, {tr("Result"), 12}, {tr("Why")}},
          [this](std::size_t row, int column) { return TextOf(row, column); }, this)),
      count_(new StatusLine(this, "ResultCountLabel")) {
  states_->setObjectName("ResultStateComboBox");
  states_->setAccessibleName(tr("Which results"));
  states_->addItem(tr("Everybody"));
  states_->addItem(tr("Who did not get it"));
  for (const auto state : {run::ResultState::kSent, run::ResultState::kRefused, run::ResultState::kDeferred,
                           run::ResultState::kFailed, run::ResultState::kUnknown, run::ResultState::kNotTried}) {
    states_->addItem(tr(run::Name(state)), static_cast<int>(state));
  }
  table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  auto* copy = new QPushButton(tr("Cop&y"), this);
  copy->setObjectName("CopyResultsButton");
  auto* save = new QPushButton(tr("Sa&ve…"), this);
  save->setObjectName("SaveResultsButton");
  count_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);

  auto* column = new FormColumn(this);
  column->AddLine({states_, text_});
  column->Add(table_, 1);
  column->AddLine({count_, copy, save});
  connect(states_, &QComboBox::currentIndexChanged, this, &ResultsView::Filter);
  connect(text_, &QLineEdit::textChanged, this, &ResultsView::Filter);
  connect(copy, &QPushButton::clicked, this, &ResultsView::Copy);
  connect(save, &QPushButton::clicked, this, &ResultsView::Save);
  Filter();
}

QString ResultsView::TextOf(std::size_t shown, int column) const {
  const run::ResultRow row = results_.At(rows_[shown]);
  switch (column) {
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

void ResultsView::Grow() {
  const bool is_changed = std::exchange(changes_, results_.changes()) != results_.changes();
  if (!is_changed && seen_ == results_.size()) return;  // what was said last stays
  if (is_changed) LookOverAgain();
  const auto more = results_.Matching(filter_, seen_);
  seen_ = results_.size();
  unknown_ += CountUnknown(more);
  rows_.insert(rows_.end(), more.begin(), more.end());
  table_->Grow(rows_.size());
  ShowCount();
}

// Some have another result than before, which the filter may not take, or may. What is chosen stays so where the same
// rows stand there.
void ResultsView::LookOverAgain() {
  auto rows = results_.Matching(filter_, 0);
  rows.erase(std::ranges::lower_bound(rows, seen_), rows.end());
  unknown_ = CountUnknown(rows);
  if (rows == rows_) return table_->viewport()->update();
  rows_ = std::move(rows);
  table_->Reset(rows_.size());
}

void ResultsView::Filter() {
  filter_ = {};
  told_.clear();
  told_as_ = NoteKind::kInformation;
  if (states_->currentData().isValid()) filter_.state = static_cast<run::ResultState>(states_->currentData().toInt());
  filter_.unsent_only = states_->currentIndex() == 1;
  filter_.text = FromQt(text_->text());
  rows_ = results_.Matching(filter_, 0);
  seen_ = results_.size();
  unknown_ = CountUnknown(rows_);
  table_->Reset(rows_.size());
  ShowCount();
}

std::int64_t ResultsView::CountUnknown(const std::vector<std::uint32_t>& rows) const {
  return std::ranges::count_if(rows, [this](auto row) { return results_.At(row).state == run::ResultState::kUnknown; });
}

void ResultsView::ShowCount() {
  table_->SetEmptyText(seen_ == 0
                           ? tr("Each recipient appears here with what became of the message. Press Send to begin.")
                           : tr("No result is of this kind. Choose “Everybody” and clear the filter to see them all."));
  count_->Say(told_.isEmpty() ? CountText() : tr("%1 %2").arg(told_, CountText()), told_as_);
}

void ResultsView::Tell(const QString& what, NoteKind as) {
  told_ = what;
  told_as_ = as;
  ShowCount();
}

QString ResultsView::CountText() const {
  const auto number = [](std::size_t count) { return ToQt(platform::WithThousands(static_cast<std::int64_t>(count))); };
  const QString count = tr("%1 of %2 results").arg(number(rows_.size()), number(results_.size()));
  QString meaning;
  if (filter_.state) {
    meaning = tr(run::MeaningOf(*filter_.state));
  } else if (filter_.unsent_only && unknown_ > 0) {
    meaning =
        Counted(unknown_, tr("1 of them is unknown: the message was out and no answer came, so it may have arrived."),
                tr("%1 of them are unknown: the messages were out and no answers came, so they may have arrived."));
  }
  return meaning.isEmpty() ? count : tr("%1. %2").arg(count, meaning);
}

// The selected rows, or all that the filter shows when none is.
void ResultsView::Copy() {
  std::vector<std::uint32_t> rows;
  for (const std::size_t shown : table_->Chosen()) rows.push_back(rows_[shown]);
  QGuiApplication::clipboard()->setText(ToQt(results_.AsText(rows.empty() ? rows_ : rows)));
}

void ResultsView::Save() {
  const char* what = filter_.state ? run::Name(*filter_.state) : "results";
  const auto file = program_.prompts.PickSaveFile({.title = "Save",
                                                   .filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*",
                                                   .name = run::ProposedName(mailing_, what, ".txt", program_.clock),
                                                   .ask_before_overwriting = true});
  if (file.empty()) return;
  const auto may_write = platform::MayWriteTo(file, program_.folders.OwnFiles(), program_.prompts);
  if (!may_write) return Tell(InWords(may_write.error()), NoteKind::kFailure);
  if (!*may_write) return Tell(InWords(platform::LeftLocked(file)));
  const auto saved = platform::ReplaceChosenFile(file, program_.folders.OwnFiles(), results_.AsText(rows_));
  if (!saved) return Tell(InWords(saved.error()), NoteKind::kFailure);
  Tell(Counted(static_cast<std::int64_t>(rows_.size()), tr("1 result was saved as %2."),
               tr("%1 results were saved as %2."))
           .arg(PathToQt(file)));
}

}  // namespace quillcast::desktop

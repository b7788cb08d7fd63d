#include "desktop/run/history_manager_form.h"

#include <QComboBox>
#include <QPushButton>
#include <algorithm>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/filter_box.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "run/kept_runs.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kMostNamed = 3;  // in a line of the main window

QStringList WhatIsForgotten(const profile::Folders& folders, const platform::Clock& clock,
                            const platform::CancelToken& cancel) {
  const auto journal = run::OpenJournal(folders, clock, cancel);
  const auto forgotten = journal ? run::ForgetFinished(**journal) : Result<run::Forgotten>(journal.error());
  if (!forgotten) return {InWords(forgotten.error())};
  QStringList sentences;
  if (const auto went = run::WhatWentOf(*forgotten)) sentences << InWords(*went);
  for (const auto& sentence : run::WhatStayed(*forgotten, kMostNamed)) sentences << InWords(sentence);
  return sentences;
}

// Nothing where there is none, or none can be read: clearing tells of that.
std::optional<Sentence> WhatWouldGo(const profile::Program& program) {
  if (!std::filesystem::exists(program.folders.RunJournal(), IgnoreErrors())) return {};
  const platform::CancelToken none;
  const auto journal = run::OpenJournal(program.folders, program.clock, none);
  const auto finished = journal ? run::FinishedOnes(**journal) : Result<run::Forgotten>(journal.error());
  return finished ? run::WhatWouldGo(*finished) : std::nullopt;
}

}  // namespace

HistoryManagerForm::HistoryManagerForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      filter_(new FilterBox("FilterTextBox", tr("Filter"), tr("Filter"), this)),
      order_(new QComboBox(this)),
      grid_(new RowList(
          "HistoryGrid", tr("Runs"), {{}}, [this](std::size_t row, int) { return TextOf(row); }, this,
          RowColourSet::kGiven)),
      status_(new StatusLine(this)),
      task_(new BackgroundTask(this)) {
  setObjectName("HistoryManagerForm");
  setWindowTitle(tr("History Manager"));
  resize(720, 440);
  order_->setObjectName("OrderComboBox");
  order_->setAccessibleName(tr("Order"));
  order_->addItems({tr("As listed"), tr("Newest first"), tr("Oldest first"), tr("By subject")});
  grid_->SetLongText(LongText::kWhole);
  auto* column = new FormColumn(this);
  column->AddLine({filter_, order_});
  column->Add(grid_, 1);
  column->Add(status_);
  MakeButtons(column);

  connect(filter_, &QLineEdit::textChanged, this, &HistoryManagerForm::Arrange);
  connect(order_, &QComboBox::currentIndexChanged, this, &HistoryManagerForm::Arrange);
  connect(grid_, &RowList::ChosenChanged, this, &HistoryManagerForm::EnableButtons);
  // Return goes to the default button; a list hands it on after acting on it, so acting here too would open it twice.
  connect(grid_, &RowList::doubleClicked, this, [this] { Open(run::OpenLog); });
  Fill();
  grid_->setFocus();
}

void HistoryManagerForm::MakeButtons(FormColumn* column) {
  const auto make = [this](const char* name, const QString& text, auto press) {
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, press);
    return button;
  };
  open_log_ = make("OpenLogButton", tr("Open &Log"), [this] { Open(run::OpenLog); });
  open_log_->setDefault(true);
  open_message_ = make("OpenMessageButton", tr("Open &Message"), [this] { Open(run::OpenMessage); });
  auto* runs = make("RunsButton", tr("R&uns…"), [this] {
    if (!show_runs) return;
    show_runs(Chosen() == nullptr ? std::string() : Chosen()->base(), [this] { FillAgain(); });
    FillAgain();
  });
  column->AddLine({open_log_, open_message_, runs, nullptr,
                   make("ClearHistoryButton", tr("Clear &History…"), [this] { Clear(); }),
                   make("CloseButton", tr("Close"), [this] { reject(); })});
}

void HistoryManagerForm::Fill() {
  auto rows = run::ListHistory(program_.folders.History());
  rows_ = rows ? std::move(*rows) : std::vector<run::HistoryRow>();
  Arrange();
  if (!rows) status_->Fail(rows.error());
}

void HistoryManagerForm::FillAgain() {
  const std::string stays = Chosen() == nullptr ? std::string() : Chosen()->file;
  Fill();
  const auto same = std::ranges::find_if(shown_, [&](std::size_t place) { return rows_[place].file == stays; });
  if (same != shown_.end()) grid_->Choose(static_cast<std::size_t>(same - shown_.begin()));
}

void HistoryManagerForm::Arrange() {
  shown_.clear();
  for (const std::size_t place : run::Arranged(rows_, static_cast<run::HistoryOrder>(order_->currentIndex()))) {
    if (ToQt(rows_[place].text).contains(filter_->text(), Qt::CaseInsensitive)) shown_.push_back(place);
  }
  grid_->SetEmptyText(rows_.empty() ? tr("Each run keeps its report and its first message here. Send a message to see "
                                         "one.")
                                    : tr("No run has this in its text. Clear the filter to see them all."));
  grid_->Reset(shown_.size());
  SayHowMany();
}

void HistoryManagerForm::SayHowMany() {
  status_->Say(rows_.empty()    ? tr("No report is kept here now; each run adds its own.")
               : shown_.empty() ? tr("No run matches the filter.")
                                : tr("%1 of %2 shown.").arg(shown_.size()).arg(rows_.size()));
}

QString HistoryManagerForm::TextOf(std::size_t row) const { return ToQt(rows_[shown_[row]].text); }

void HistoryManagerForm::EnableButtons() {
  const bool chosen = Chosen() != nullptr;
  open_log_->setEnabled(chosen);
  open_message_->setEnabled(chosen);
}

const run::HistoryRow* HistoryManagerForm::Chosen() const {
  const auto chosen = grid_->Chosen();
  return chosen.empty() ? nullptr : &rows_[shown_[chosen.front()]];
}

void HistoryManagerForm::Open(Opener opener) {
  const run::HistoryRow* row = Chosen();
  if (row == nullptr) return;
  const auto opened = opener(program_.folders.History(), *row, program_.desktop, program_.prompts);
  if (!opened) status_->Fail(opened.error());
}

// The question does not say what else goes, so that this stands behind it before it is asked.
void HistoryManagerForm::Clear() {
  if (const auto goes = WhatWouldGo(program_)) status_->Say(InWords(*goes));
  const auto cleared = run::ClearHistory(program_.folders.History(), program_.prompts);
  if (cleared.clearing != run::Clearing::kCleared) return SayHowMany();
  QStringList sentences = {
      Counted(static_cast<std::int64_t>(cleared.deleted), tr("1 file was deleted."), tr("%1 files were deleted."))};
  for (const auto& sentence : run::WhatStayed(cleared)) sentences << InWords(sentence);
  const auto done = run::WhatFailed(cleared, program_.folders.History());
  if (!done) sentences << InWords(done.error());
  cleared_ = sentences.join(' ');
  ForgetFinished();
}

// With the reports goes what the journal keeps of those runs, which takes as long as those were large.
void HistoryManagerForm::ForgetFinished() {
  if (!std::filesystem::exists(program_.folders.RunJournal(), IgnoreErrors())) return accept();
  for (auto* child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) child->setEnabled(child == status_);
  status_->Say(tr("Working…"));
  task_->Start([this, &folders = program_.folders, &clock = program_.clock](const platform::CancelToken& cancel) {
    return [this, forgotten = WhatIsForgotten(folders, clock, cancel)] {
      cleared_ = QStringList({cleared_, forgotten.join(' ')}).join(' ').trimmed();
      accept();
    };
  });
}

void HistoryManagerForm::reject() {
  if (!task_->is_running()) QDialog::reject();
}

}  // namespace quillcast::desktop

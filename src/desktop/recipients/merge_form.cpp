#include "desktop/recipients/merge_form.h"

#include <QPushButton>

#include "desktop/recipients/work_panel.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

MergeForm::MergeForm(const profile::Program& program, const std::vector<std::string>& groups, std::string into,
                     QWidget* parent)
    : QDialog(parent),
      program_(program),
      into_(std::move(into)),
      what_(new StatusLine(this, "WhatLabel")),
      list_(new RowList(
          "GroupsList", tr("Groups"), {{}}, [this](std::size_t row, int) { return ToQt(others_.at(row)); }, this)),
      duplicates_(new RowList(
          "DuplicatesList", tr("There already"), {{}},
          [this](std::size_t row, int) { return ToQt(platform::Printable(outcome_->duplicate_entries.at(row))); },
          this)),
      status_(new StatusLine(this)),
      work_(new WorkPanel(program, this)),
      ok_(new QPushButton(tr("OK"), this)) {
  for (const std::string& group : groups) {
    if (!recipients::CheckOtherGroup(into_, group)) others_.push_back(group);
  }
  MakeWindow();
  connect(ok_, &QPushButton::clicked, this, &MergeForm::accept);
  connect(work_, &WorkPanel::Closing, this, &MergeForm::reject);
  for (QWidget* control : std::initializer_list<QWidget*>{list_, ok_}) {
    connect(work_, &WorkPanel::Started, control, [control] { control->setEnabled(false); });
    connect(work_, &WorkPanel::Ended, control, [control] { control->setEnabled(true); });
  }
  list_->Reset(others_.size());
  list_->setFocus();
}

void MergeForm::MakeWindow() {
  setObjectName("MergeForm");
  setWindowTitle(tr("Merge Groups"));
  resize(460, 380);
  what_->Say(tr("Choose the groups whose recipients go into “%1”. The groups are deleted then.").arg(ToQt(into_)));
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->SetEmptyText(tr("There is no other group that could go into this one."));
  duplicates_->hide();
  ok_->setObjectName("OKButton");
  ok_->setDefault(true);
  auto* column = new FormColumn(this);
  column->Add(what_);
  column->Add(list_, 1);
  column->Add(duplicates_, 1);
  column->Add(status_);
  column->Add(work_);
  work_->AddBeside(ok_);  // once it is in the window, whose order it follows
}

std::vector<std::string> MergeForm::Chosen() const {
  std::vector<std::string> chosen;
  for (const std::size_t row : list_->Chosen()) chosen.push_back(others_.at(row));
  return chosen;
}

void MergeForm::accept() {
  const auto chosen = Chosen();
  if (const auto complaint = recipients::CheckGroupChosen(chosen.empty() ? "" : chosen.front())) {
    program_.prompts.Warn(complaint->message);
    list_->setFocus();
    return;
  }
  if (program_.prompts.Ask(recipients::MergeQuestion(chosen, into_).InEnglish()) != platform::Answer::kYes) return;
  status_->Say({});
  work_->Run<recipients::MoveOutcome>(
      [chosen, into = into_](recipients::RecipientStore& store, const recipients::OnProgress& progress) {
        return recipients::MergeGroups(store, chosen, into, progress);
      },
      [this](const Result<recipients::MoveOutcome>& outcome) { End(outcome); });
}

void MergeForm::End(const Result<recipients::MoveOutcome>& outcome) {
  if (!outcome) return status_->Say(InWords(outcome.error()), work_->KindOfFailure());
  outcome_ = *outcome;
  outcome_->duplicates == 0 ? QDialog::accept() : ShowDuplicates();
}

QString MergeForm::said() const {
  return Counted(outcome_->done, tr("1 recipient came in."), tr("%1 recipients came in.")) + ' ' +
         Counted(outcome_->duplicates, tr("1 was there already."), tr("%1 were there already."));
}

void MergeForm::ShowDuplicates() {
  const auto listed = static_cast<std::int64_t>(outcome_->duplicate_entries.size());
  const QString rest = listed == outcome_->duplicates
                           ? QString()
                           : ' ' + Counted(listed, QString(), tr("The first %1 of them are listed."));
  what_->Say(tr("Who was in “%1” already was not taken twice:").arg(ToQt(into_)));
  status_->Say(said() + rest);
  duplicates_->Reset(outcome_->duplicate_entries.size());
  list_->hide();
  duplicates_->show();
  ok_->hide();
  work_->button()->setText(tr("Close"));
  work_->button()->setFocus();
}

void MergeForm::reject() {
  if (work_->is_working()) return work_->Cancel();
  outcome_ ? QDialog::accept() : QDialog::reject();
}

}  // namespace quillcast::desktop

#include "desktop/recipients/merge_form.h"

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "recipients/edit/move_recipients.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

MergeForm::MergeForm(const profile::Program& program, const std::vector<std::string>& groups, std::string into,
                     QWidget* parent)
    : QDialog(parent),
      program_(program),
      into_(std::move(into)),
      list_(new RowList(
          "GroupsList", tr("Groups"), {{}}, [this](std::size_t row, int) { return ToQt(others_.at(row)); }, this)) {
  setObjectName("MergeForm");
  setWindowTitle(tr("Merge Groups"));
  resize(420, 340);
  for (const std::string& group : groups) {
    if (!recipients::CheckOtherGroup(into_, group)) others_.push_back(group);
  }
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->SetEmptyText(tr("There is no other group that could go into this one."));
  auto* column = new FormColumn(this);
  auto* what = column->Add(new StatusLine(this, "WhatLabel"));
  what->Say(tr("Choose the groups whose recipients go into “%1”. The groups are deleted then.").arg(ToQt(into_)));
  column->Add(list_, 1);
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  list_->Reset(others_.size());
  list_->setFocus();
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
  } else if (program_.prompts.Ask(recipients::MergeQuestion(chosen, into_).InEnglish()) == platform::Answer::kYes) {
    QDialog::accept();
  }
}

}  // namespace quillcast::desktop

// What the buttons of the group manager do.
#include <QComboBox>
#include <QLabel>

#include "desktop/recipients/capitalize_form.h"
#include "desktop/recipients/duplicates_form.h"
#include "desktop/recipients/grid_actions.h"
#include "desktop/recipients/group_manager_form.h"
#include "desktop/recipients/group_new_form.h"
#include "desktop/recipients/group_rename_form.h"
#include "desktop/recipients/merge_form.h"
#include "desktop/recipients/recipient_add_form.h"
#include "desktop/recipients/recipient_export_form.h"
#include "desktop/recipients/recipient_grid.h"
#include "desktop/recipients/recipient_import_form.h"
#include "desktop/recipients/recipient_modify_form1.h"
#include "desktop/recipients/recipient_move_form.h"
#include "desktop/recipients/recipient_print_form.h"
#include "desktop/recipients/recipient_search_form.h"
#include "desktop/recipients/sort_form.h"
#include "desktop/recipients/where_form.h"
#include "desktop/recipients/work_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "recipients/edit/capitalise_group.h"
#include "recipients/edit/move_recipients.h"
#include "recipients/edit/undo.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

std::span<const GroupManagerForm::Command> GroupManagerForm::Commands() {
  using Form = GroupManagerForm;
  static constexpr Command kCommands[] = {
      {"NewGroupButton", QT_TR_NOOP("&New Group…"), Needs::kNothing, &Form::NewGroup},
      {"RenameGroupButton", QT_TR_NOOP("&Rename…"), Needs::kGroup, &Form::RenameGroup},
      {"DeleteGroupButton", QT_TR_NOOP("Delete Gr&oup"), Needs::kGroup, &Form::DeleteGroup},
      {"AddButton", QT_TR_NOOP("&Add…"), Needs::kGroup, &Form::Add},
      {"ModifyButton", QT_TR_NOOP("&Modify…"), Needs::kRecipients, &Form::Modify},
      {"DeleteButton", QT_TR_NOOP("&Delete"), Needs::kRecipients, &Form::Delete},
      {"MoveButton", QT_TR_NOOP("Mo&ve or Copy…"), Needs::kRecipients, &Form::Move},
      {"SearchButton", QT_TR_NOOP("&Search…"), Needs::kRecipients, &Form::Search},
      {"DuplicatesButton", QT_TR_NOOP("Duplica&tes…"), Needs::kRecipients, &Form::Duplicates},
      {"WhereButton", QT_TR_NOOP("&Where Else…"), Needs::kRecipients, &Form::WhereElse},
      {"UndoButton", QT_TR_NOOP("&Undo"), Needs::kNothing, &Form::Undo},
      {"ImportButton", QT_TR_NOOP("&Import…"), Needs::kNothing, &Form::Import},
      {"ExportButton", QT_TR_NOOP("E&xport…"), Needs::kNothing, &Form::Export},
      {"CapitalizeButton", QT_TR_NOOP("&Capitalize…"), Needs::kRecipients, &Form::Capitalize},
      {"SortButton", QT_TR_NOOP("Sort &by…"), Needs::kGroup, &Form::Sort},
      {"MergeButton", QT_TR_NOOP("M&erge…"), Needs::kGroup, &Form::Merge},
      {"PrintButton", QT_TR_NOOP("&Print…"), Needs::kRecipients, &Form::Print},
      {"CloseButton", QT_TR_NOOP("Close"), Needs::kNothing, &Form::reject},
  };
  return kCommands;
}

// What an earlier command said is no longer true.
void GroupManagerForm::Run(const Command& command) {
  status_->Say({});
  if (PassesChecks(command.needs)) (this->*command.run)();
  if (status_->text().isEmpty()) SayOrder();
}

bool GroupManagerForm::PassesChecks(Needs needs) {
  std::optional<recipients::GroupComplaint> complaint;
  if (needs != Needs::kNothing) complaint = recipients::CheckGroupChosen(FromQt(Group()));
  if (!complaint && needs == Needs::kRecipients) complaint = recipients::CheckGroupNotEmpty(count_);
  if (!complaint) return needs == Needs::kNothing || IsGroupThere();
  program_.prompts.Warn(complaint->message);
  return false;
}

// A store that cannot be read now lets the command itself say so.
bool GroupManagerForm::IsGroupThere() {
  const auto found = Store().FindGroup(FromQt(Group()));
  if (!found || *found) return true;
  ShowGone(Group());
  return false;
}

// Where no group was chosen the new one is, so that recipients can be added to it.
void GroupManagerForm::NewGroup() {
  GroupNewForm form(program_, this);
  if (form.exec() != QDialog::Accepted) return;
  groups_->addItem(form.name());
  TellGroups({}, form.name());
  if (Group().isEmpty()) groups_->setCurrentIndex(groups_->count() - 1);
}

void GroupManagerForm::RenameGroup() {
  GroupRenameForm form(program_, Group(), this);
  if (form.exec() != QDialog::Accepted) return;
  const QString before = std::exchange(shown_, form.name());
  FillGroups(form.name());
  TellGroups(before, form.name());
}

void GroupManagerForm::DeleteGroup() {
  const std::string group = FromQt(Group());
  if (program_.prompts.Ask(recipients::DeleteQuestion(group).InEnglish()) != platform::Answer::kYes) return;
  work_->Run<std::int64_t>(
      [group](recipients::RecipientStore& store, const recipients::OnProgress& progress) {
        return recipients::DeleteWholeGroup(store, group, progress);
      },
      [this, group](const Result<std::int64_t>& gone) {
        if (!gone) return FailWork(gone.error());
        ShowNone();
        status_->Say(tr("“%1” was deleted. Undo brings it back.").arg(ToQt(group)));
        ShowUndo();
        TellGroups(ToQt(group), {});
      });
}

void GroupManagerForm::Add() {
  RecipientAddForm form(program_, Group(), this);
  form.exec();
  if (!form.written()) return;
  ++count_;
  ShowTotal();
  if (!is_order_understood_) return SayOrder(tr("The recipient was added."));
  rows_->Append(std::array{form.written()->id});
  grid_->Grow(rows_->size());
  grid_->Choose(rows_->size() - 1);
}

void GroupManagerForm::Modify() {
  if (grid_->Chosen().empty()) return Say(tr("Choose a recipient first."));
  const auto one = actions_->TakeOne();
  if (!one) return;
  RecipientModifyForm1 form(program_, Group(), one->texts.id, this);
  form.exec();
  if (!form.written()) return;
  rows_->Put(one->row, *form.written());
  grid_->viewport()->update();
}

void GroupManagerForm::Delete() {
  const auto chosen = grid_->Chosen();
  if (chosen.empty()) return Say(tr("Choose a recipient first."));
  const std::string group = FromQt(Group());
  Sentence question = recipients::DeleteSeveralQuestion(static_cast<std::int64_t>(chosen.size()), group);
  if (chosen.size() == 1) {
    const auto one = actions_->TakeOne();
    if (!one) return;
    question = recipients::DeleteQuestion(one->texts.email);
  }
  if (program_.prompts.Ask(question.InEnglish()) != platform::Answer::kYes) return;
  work_->Run<std::int64_t>(
      [group, keys = actions_->ChosenKeys()](recipients::RecipientStore& store,
                                             const recipients::OnProgress& progress) {
        return recipients::DeleteRecipients(store, group, keys, recipients::DeletedFrom::kGroup, progress);
      },
      [this, chosen](const Result<std::int64_t>& gone) {
        if (!gone) return FailWork(gone.error());
        const bool are_all = *gone == static_cast<std::int64_t>(chosen.size());
        if (are_all) {
          actions_->Remove(chosen, GridActions::Nearest::kChosen);
          count_ -= *gone;
          ShowTotal();
        }
        ShowUndo();
        Say(Counted(*gone, tr("1 recipient was deleted."), tr("%1 recipients were deleted.")));
        if (!are_all) ReadAgain();  // another program has changed the group, or made another of its name
      });
}

void GroupManagerForm::Search() {
  RecipientSearchForm form(program_, Group(), this);
  form.exec();
  if (!form.has_changed()) return;
  FillGroups(Group());
  TellGroups();
  ShowUndo();
  ReadAgain();
}

void GroupManagerForm::Import() {
  if (const auto complaint = recipients::CheckGroupsToImportTo(groups_->count() > 0)) {
    program_.prompts.Warn(complaint->message);
    return;
  }
  RecipientImportForm form(program_, Group(), this);
  form.exec();
  Say(form.said());
  ReadAgain();
}

void GroupManagerForm::Export() {
  if (const auto complaint = recipients::CheckGroupsToExportFrom(groups_->count() > 0)) {
    program_.prompts.Warn(complaint->message);
    return;
  }
  RecipientExportForm form(program_, Group(), this);
  form.exec();
  Say(form.said());
}

void GroupManagerForm::Move() {
  const auto keys = actions_->ChosenKeys();
  if (keys.empty()) return Say(tr("Choose a recipient first."));
  RecipientMoveForm form(program_, Group(), keys, this);
  form.exec();
  if (form.has_made_group()) {
    FillGroups(Group());
    TellGroups();
  }
  if (!form.said().isEmpty()) Say(form.said());
  ShowUndo();
  if (form.has_moved()) ReadAgain();
}

// Those chosen where they are several, else the whole group.
void GroupManagerForm::Print() {
  if (rows_->size() == 0) return SayOrder();
  const auto chosen = actions_->ChosenKeys();
  RecipientPrintForm::Print(program_, tr("Recipients of “%1”").arg(Group()), chosen.size() > 1 ? chosen : rows_->keys(),
                            *status_, this);
}

void GroupManagerForm::Capitalize() {
  CapitalizeForm form(program_, Group(), this);
  if (form.exec() != QDialog::Accepted) return;
  work_->Run<std::int64_t>(
      [group = FromQt(Group())](recipients::RecipientStore& store, const recipients::OnProgress& progress) {
        return recipients::CapitaliseGroup(store, group, progress);
      },
      [this](const Result<std::int64_t>& changed) {
        if (!changed) return FailWork(changed.error());
        Say(Counted(*changed, tr("1 recipient was changed."), tr("%1 recipients were changed.")));
        ShowUndo();
        ReadAgain();
      });
}

void GroupManagerForm::Sort() {
  const auto group = Store().FindGroup(FromQt(Group()));
  if (!group) return status_->Fail(group.error());
  if (!*group) return status_->Fail(recipients::GroupGone());
  SortForm form((*group)->sort_sql, this);
  if (form.exec() != QDialog::Accepted || !form.has_changed()) return;
  const auto sorted = recipients::SortGroup(Store(), (*group)->name, form.SortText());
  if (!sorted) return status_->Fail(sorted.error());
  view_ = {};
  Say(form.SortText().empty() ? tr("The group is in the order of adding.") : tr("The group is sorted."));
  ShowUndo();
  ReadAgain();
}

void GroupManagerForm::Merge() {
  const auto names = Store().ListGroupNames();
  if (!names) return status_->Fail(names.error());
  MergeForm form(program_, *names, FromQt(Group()), this);
  form.exec();
  if (!form.outcome()) return;
  Say(form.said());
  FillGroups(Group());
  TellGroups();
  ShowUndo();
  ReadAgain();
}

void GroupManagerForm::Duplicates() {
  DuplicatesForm form(program_, Group(), this);
  if (form.exec() != QDialog::Accepted) return;
  work_->Run<std::int64_t>(
      [group = FromQt(Group())](recipients::RecipientStore& store, const recipients::OnProgress& progress) {
        return recipients::DeleteDuplicates(store, group, progress);
      },
      [this](const Result<std::int64_t>& gone) {
        if (!gone) return FailWork(gone.error());
        Say(Counted(*gone, tr("1 duplicate was deleted."), tr("%1 duplicates were deleted.")));
        ShowUndo();
        ReadAgain();
      });
}

void GroupManagerForm::WhereElse() {
  if (grid_->Chosen().empty()) return Say(tr("Choose a recipient first."));
  if (const auto one = actions_->TakeOne()) WhereForm(program_, one->texts.email, this).exec();
}

void GroupManagerForm::Undo() {
  const auto step = recipients::FindUndo(Store());
  if (!step) return status_->Fail(step.error());
  if (!*step) return Say(tr("There is nothing to take back."));
  if (program_.prompts.Ask(recipients::UndoQuestion(**step).InEnglish()) != platform::Answer::kYes) return;
  work_->Run<recipients::UndoOutcome>(
      [](recipients::RecipientStore& store, const recipients::OnProgress& progress) {
        return recipients::Undo(store, progress);
      },
      [this](const Result<recipients::UndoOutcome>& outcome) {
        if (!outcome) return FailWork(outcome.error());
        Say(outcome->left == 0 ? tr("It is as it was before.")
                               : Counted(outcome->left, tr("All is as it was, but for 1 that was changed since."),
                                         tr("All is as it was, but for %1 that were changed since.")));
        const bool was_deleted = outcome->step.kind == recipients::EditKind::kDeleteGroup;
        if (was_deleted) view_ = {};  // another group is shown, as whoever chooses one sees it
        FillGroups(was_deleted ? ToQt(outcome->step.group) : Group());
        TellGroups();
        ShowUndo();
        ReadAgain();
      });
}

}  // namespace quillcast::desktop

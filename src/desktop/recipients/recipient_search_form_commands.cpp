// What the buttons of the search's dialog do with those who were found.
#include <algorithm>
#include <set>

#include "desktop/recipients/grid_actions.h"
#include "desktop/recipients/recipient_grid.h"
#include "desktop/recipients/recipient_modify_form2.h"
#include "desktop/recipients/recipient_move_form.h"
#include "desktop/recipients/recipient_print_form.h"
#include "desktop/recipients/recipient_search_form.h"
#include "desktop/recipients/work_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "recipients/edit/move_recipients.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {

bool RecipientSearchForm::HasChosen() {
  const auto complaint = recipients::CheckFoundChosen(!actions_->Meant().empty());
  if (!complaint) return true;
  program_.prompts.Warn(complaint->message);
  grid_->setFocus();
  return false;
}

// A search that ends while a question stands shows others: a recipient is held by the key.
std::vector<std::size_t> RecipientSearchForm::RowsOf(const std::vector<std::int64_t>& keys) const {
  const std::set<std::int64_t> wanted(keys.begin(), keys.end());
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < rows_->keys().size(); ++row) {
    if (wanted.contains(rows_->keys()[row])) rows.push_back(row);
  }
  return rows;
}

void RecipientSearchForm::Modify() {
  if (!HasChosen()) return;
  const auto one = actions_->TakeOne();
  if (!one) return;
  const std::int64_t key = one->texts.id;
  RecipientModifyForm2 form(program_, group_, key, this);
  form.exec();
  if (!form.written()) return;
  has_changed_ = true;
  for (const std::size_t row : RowsOf({key})) rows_->Put(row, *form.written());
  grid_->viewport()->update();
}

void RecipientSearchForm::Delete() {
  if (!HasChosen()) return;
  std::vector<std::int64_t> keys;
  for (const std::size_t row : actions_->Meant()) keys.push_back(rows_->keys()[row]);
  Sentence question = recipients::DeleteSeveralQuestion(static_cast<std::int64_t>(keys.size()), FromQt(group_));
  if (keys.size() == 1) {
    const auto one = actions_->TakeOne();
    if (!one) return;
    question = recipients::DeleteQuestion(one->texts.email);
  }
  if (program_.prompts.Ask(question.InEnglish()) != platform::Answer::kYes) return;
  work_->Run<std::int64_t>(
      [group = FromQt(group_), keys](recipients::RecipientStore& store, const recipients::OnProgress& progress) {
        return recipients::DeleteRecipients(store, group, keys, recipients::DeletedFrom::kSearchResults, progress);
      },
      [this, keys](const Result<std::int64_t>& deleted) {
        if (deleted) return Deleted(RowsOf(keys), *deleted);
        status_->Say(InWords(deleted.error()), work_->KindOfFailure());
      });
}

void RecipientSearchForm::Deleted(const std::vector<std::size_t>& rows, std::int64_t count) {
  has_changed_ = true;
  actions_->Remove(rows, GridActions::Nearest::kCurrent);
  grid_->setFocus();
  told_ = Counted(count, tr("1 recipient was deleted."), tr("%1 recipients were deleted."));
  SayFound();
}

std::vector<std::int64_t> RecipientSearchForm::ChosenOrAll() const {
  const auto keys = actions_->ChosenKeys();
  return keys.empty() ? rows_->keys() : keys;
}

void RecipientSearchForm::Move() {
  const auto keys = ChosenOrAll();
  if (keys.empty()) return status_->Say(tr("Nobody was found who could be moved or copied."));
  RecipientMoveForm form(program_, group_, keys, this);
  form.exec();
  has_changed_ = has_changed_ || form.has_moved() || form.has_made_group();
  if (!form.said().isEmpty()) status_->Say(form.said());
  if (!form.has_moved()) return;
  told_ = form.said();
  Start(Kind::kAsked, request_);  // those that were there already have stayed
}

void RecipientSearchForm::Print() {
  const auto keys = ChosenOrAll();
  if (keys.empty()) return status_->Say(tr("Nobody was found who could be printed."));
  RecipientPrintForm::Print(program_, tr("Recipients of “%1”").arg(group_), keys, *status_, this);
}

}  // namespace quillcast::desktop

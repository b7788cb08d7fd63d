#include "desktop/run/run_pace_form.h"

#include <QDialogButtonBox>
#include <QLayout>
#include <QPushButton>
#include <utility>

#include "account/account_pace.h"
#include "desktop/account/pace_page.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {

RunPaceForm::RunPaceForm(Otherwise otherwise, const run::PaceTexts& chosen,
                         std::function<void(QWidget*)> change_account, QWidget* parent)
    : QDialog(parent),
      otherwise_(std::move(otherwise)),
      change_account_(std::move(change_account)),
      page_(new PacePage(this)),
      status_(new StatusLine(this)) {
  setObjectName("RunPaceForm");
  setWindowTitle(tr("Pace of This Run"));
  auto* column = new FormColumn(this);
  page_->layout()->setContentsMargins(0, 0, 0, 0);  // the dialog has them
  column->Add(page_, 1);
  column->Add(status_);
  QDialogButtonBox* box = column->AddButtons();
  const auto add = [box](const QString& text, QDialogButtonBox::ButtonRole role, const char* name) {
    QPushButton* button = box->addButton(text, role);
    button->setObjectName(name);
    return button;
  };
  if (change_account_) {
    connect(add(tr("Change the &account's pace…"), QDialogButtonBox::ResetRole, "AccountPaceButton"),
            &QPushButton::clicked, this, &RunPaceForm::ChangeAccount);
  }
  add(tr("&Use for this run"), QDialogButtonBox::AcceptRole, "UseButton")->setDefault(true);
  add(tr("Cancel"), QDialogButtonBox::RejectRole, "CancelButton");
  Show(chosen);
  connect(page_, &PacePage::Changed, this, &RunPaceForm::LookAgain);
  page_->FocusOn(account::AccountKey::kRate);
}

void RunPaceForm::Show(const run::PaceTexts& chosen) {
  const auto otherwise = otherwise_();
  otherwise ? status_->Say({}) : status_->Fail(otherwise.error());
  page_->Put(otherwise ? *otherwise : run::PaceTexts());
  was_ = page_->Texts();
  page_->Put(run::Or(chosen, was_));
}

// What was typed for the run stays, the rest is what the account says by then.
void RunPaceForm::ChangeAccount() {
  const run::PaceTexts typed = account::InsteadOf(was_, page_->Texts());
  change_account_(this);
  Show(typed);
}

// What is said of a text goes as it is corrected.
void RunPaceForm::LookAgain() {
  if (!tells_fault_) return;
  const auto fault = account::FaultInPace(page_->Texts());
  tells_fault_ = fault.has_value();
  fault ? status_->Fail(fault->error) : status_->Say({});
}

void RunPaceForm::accept() {
  const run::PaceTexts texts = page_->Texts();
  if (const auto fault = account::FaultInPace(texts)) {
    page_->FocusOn(fault->key);
    status_->Fail(fault->error);
    tells_fault_ = true;
    return;
  }
  chosen_ = account::InsteadOf(was_, texts);
  QDialog::accept();
}

}  // namespace quillcast::desktop

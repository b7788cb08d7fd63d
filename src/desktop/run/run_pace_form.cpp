#include "desktop/run/run_pace_form.h"

#include <QDialogButtonBox>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <utility>

#include "account/account_pace.h"
#include "desktop/account/pace_page.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {

RunPaceForm::RunPaceForm(Otherwise otherwise, const run::PaceTexts& chosen,
                         std::function<void(QWidget*)> change_account, const platform::Clock& clock, QWidget* parent)
    : QDialog(parent),
      otherwise_(std::move(otherwise)),
      change_account_(std::move(change_account)),
      clock_(clock),
      page_(new PacePage(this)),
      begin_(new QLineEdit(this)),
      status_(new StatusLine(this)) {
  setObjectName("RunPaceForm");
  setWindowTitle(tr("Pace of This Run"));
  auto* column = new FormColumn(this);
  page_->layout()->setContentsMargins(0, 0, 0, 0);  // the dialog has them
  column->AddBox(tr("This run"))->Add("BeginTextBox", tr("&Begin at:"), begin_);
  column->Add(page_, 1);
  begin_->setPlaceholderText(tr("At once; or 18:30, 2026-12-24 08:00"));
  column->Add(status_);
  status_->KeepRoom(2);
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
  connect(begin_, &QLineEdit::textChanged, this, &RunPaceForm::LookAgain);
  page_->FocusOn(account::AccountKey::kRate);
}

void RunPaceForm::Show(const run::PaceTexts& chosen) {
  const auto otherwise = otherwise_();
  otherwise ? status_->Say({}) : status_->Fail(otherwise.error());
  Put(otherwise ? *otherwise : run::PaceTexts());
  was_ = Texts();
  Put(run::Or(chosen, was_));
}

void RunPaceForm::Put(const run::PaceTexts& texts) {
  page_->Put(texts);
  begin_->setText(platform::EqualsIgnoringAsciiCase(texts.at, "none") ? QString() : ToQt(texts.at));
}

run::PaceTexts RunPaceForm::Texts() const {
  run::PaceTexts texts = page_->Texts();
  texts.at = platform::Trim(FromQt(begin_->text()));
  return texts;
}

// What was typed for the run stays, the rest is what the account says by then.
void RunPaceForm::ChangeAccount() {
  const run::PaceTexts typed = Typed();
  change_account_(this);
  Show(typed);
}

// A time of the day is the next such: it keeps its day from here on.
run::PaceTexts RunPaceForm::Typed() const {
  const run::PaceTexts texts = Texts();
  run::PaceTexts chosen = account::InsteadOf(was_, texts);
  if (texts.at == was_.at) return chosen;
  const auto begin = IgnoreErrors(run::ReadMoment(texts.at, clock_), std::nullopt);
  chosen.at = begin ? run::MomentAsWritten(*begin, clock_) : texts.at.empty() ? "none" : texts.at;
  return chosen;
}

std::optional<Error> RunPaceForm::Fault(bool goes_there) const {
  const run::PaceTexts texts = Texts();
  if (const auto fault = account::FaultInPace(texts)) {
    if (goes_there) page_->FocusOn(fault->key);
    return fault->error;
  }
  const auto begin = run::ReadMoment(texts.at, clock_);
  const bool is_over = begin && *begin && **begin < clock_.Now();
  if (begin && !is_over) return {};
  if (goes_there) begin_->setFocus();
  if (!begin) return begin.error();
  return Error{Failure::kUsage, Say("The time {} is over.", texts.at),
               "Write one that is ahead, or nothing to begin at once."};
}

// What is said of a text goes as it is corrected.
void RunPaceForm::LookAgain() {
  if (!tells_fault_) return;
  const auto fault = Fault(false);
  tells_fault_ = fault.has_value();
  fault ? status_->Fail(*fault) : status_->Say({});
}

void RunPaceForm::accept() {
  if (const auto fault = Fault(true)) {
    status_->Fail(*fault);
    tells_fault_ = true;
    return;
  }
  chosen_ = Typed();
  QDialog::accept();
}

}  // namespace quillcast::desktop

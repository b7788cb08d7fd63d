// The part of the dialog that saves, tests, resets and imports.
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <array>

#include "account/account_form.h"
#include "account/import/account_import.h"
#include "account/keyring_note.h"
#include "account/password_place.h"
#include "desktop/account/email_manager_form.h"
#include "desktop/account/outlook_express_form.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "smtp/outcome_text.h"

namespace quillcast::desktop {

using enum account::AccountKey;

namespace {

// They would change, or show in another window, what is at work.
constexpr std::array kNotMeanwhile = {"OKButton", "ResetButton", "ImportButton", "AdvancedButton"};

}  // namespace

void EmailManagerForm::accept() {
  const account::AccountSettings shown = Shown();
  if (!Check(shown)) return;
  Carry(
      [secrets = secrets_, shown](auto& settings, const auto& cancel) { return secrets.Save(shown, settings, cancel); },
      secrets_.SavingAsksKeyring(shown, program_.settings), [shown] { return account::TextsOf(shown); });
}

void EmailManagerForm::Carry(const Change& change, bool asks_keyring, const Texts& texts) {
  if (!asks_keyring) {
    Carried(change(program_.settings, platform::CancelToken()), texts);
    return;
  }
  Begin(tr("Stop"), tr("Asking the keyring…"));
  pages_->setEnabled(false);
  test_->Start([=, this, file = program_.folders.settings](const platform::CancelToken& cancel) {
    profile::SettingsStore settings(file);
    auto left = std::make_shared<Result<account::SecretsLeft>>(change(settings, cancel));
    return [this, left, texts] {
      End();
      Carried(*left, texts);
    };
  });
}

// Where the keyring still has the password the window stays, so that this can be read, and shows what is stored now.
void EmailManagerForm::Carried(const Result<account::SecretsLeft>& left, const Texts& texts) {
  const auto shown = left ? texts() : Result<account::SenderTexts>(left.error());
  if (!shown) {
    status_->Fail(shown.error());
    return;
  }
  if (changed) changed(*shown);
  if (!left->in_keyring) {
    QDialog::accept();
    return;
  }
  if (const auto stored = account::AccountSettings::Load(program_.settings)) Show(account::ShownInDialog(*stored));
  status_->Fail(*left->in_keyring);
}

// Escape first ends a test that is under way.
void EmailManagerForm::reject() {
  if (test_->is_running()) {
    test_->Cancel();
    return;
  }
  QDialog::reject();
}

void EmailManagerForm::Reset() {
  if (!account::AgreesToReset(program_.prompts)) return;
  Carry([secrets = secrets_](auto& settings, const auto& cancel) { return secrets.Reset(settings, cancel); },
        secrets_.ResettingAsksKeyring(program_.settings),
        [this] { return account::TextsAfterReset(program_.settings); });
}

// What the import wrote comes into the controls; what was typed into the others stays.
void EmailManagerForm::Import() {
  OutlookExpressForm form(program_, account_places ? account_places() : std::vector<account::AccountRoot>(), this);
  if (form.exec() != Accepted) return;
  const auto stored = account::AccountSettings::Load(program_.settings);
  if (!stored) {
    status_->Fail(stored.error());
    return;
  }
  account::AccountSettings shown = Shown();
  for (const account::AccountKey key : form.written()) shown.Set(key, (*stored)[key]);
  Show(shown);
  if (imported) imported(account::TextsOf(*stored).from);
  const QString then = InWords(
      account::PasswordAfterImport(*stored, form.written(), account::KeyringNoteOf(program_.settings).kept_for));
  status_->Say(tr("The account is taken over and saved.") + (then.isEmpty() ? "" : " ") + then);
}

void EmailManagerForm::PickFolder() {
  account::AccountSettings shown = Shown();
  account::PickQueueFolder(shown, program_.prompts);
  Find<QLineEdit>("ThirdPathTextBox")->setText(ToQt(shown[kThirdPath]));
}

void EmailManagerForm::TestOrCancel() {
  if (test_->is_running()) {
    test_->Cancel();
    return;
  }
  const account::AccountSettings shown = Shown();
  const QString first = InWords(account::WaitForPasswordText(shown));
  Begin(tr("Stop test"),
        (first.isEmpty() ? first : first + ' ') + tr("Trying %1…").arg(Find<QLineEdit>("ServerTextBox")->text()));
  test_->Start([this, secrets = secrets_, shown](const platform::CancelToken& cancel) {
    auto test = std::make_shared<account::AccountTest>(account::TestAccount(shown, secrets, program_.clock, cancel));
    return [this, test] { TestFinished(*test); };
  });
}

void EmailManagerForm::Begin(const QString& stop, const QString& status) {
  status_->Say(status);
  test_button_->setText(stop);
  for (const char* name : kNotMeanwhile) Find<QPushButton>(name)->setEnabled(false);
}

void EmailManagerForm::End() {
  test_button_->setText(tr("Test"));
  pages_->setEnabled(true);
  for (const char* name : kNotMeanwhile) Find<QPushButton>(name)->setEnabled(true);
}

void EmailManagerForm::TestFinished(const account::AccountTest& test) {
  End();
  const std::string reply = smtp::ReplyText(test.outcome.reply);
  QString detail = ToQt(platform::Printable(test.outcome.reason));
  if (!reply.empty())
    detail += (detail.isEmpty() ? QString() : QString(" ")) + tr("The server said: %1").arg(ToQt(reply));
  status_->Say(detail, test.Works() ? NoteKind::kInformation : NoteKind::kFailure);
  if (test.Works()) {
    program_.prompts.Inform(test.text);
  } else if (test.outcome.code == smtp::ResultCode::kCancelled) {
    status_->Say(tr("The test was stopped."));
  } else {
    program_.prompts.Warn(test.text);
  }
}

}  // namespace quillcast::desktop

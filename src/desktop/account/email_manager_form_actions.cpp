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
  const account::AccountChange change(seen_, Shown());
  if (!Check(change)) return;
  const auto told = [](const account::SavedAccount& saved) {
    return Changed{account::TextsOf(saved.account), saved.in_keyring};
  };
  if (const auto saved = secrets_.SaveAtOnce(change, program_.settings)) {
    Carried(*saved ? Result<Changed>(told(**saved)) : saved->error());
    return;
  }
  Carry(secrets_.SavingAsksKeyring(change.wanted(), program_.settings),
        [secrets = secrets_, change, told](auto& settings, const auto& cancel) -> Result<Changed> {
          const auto saved = secrets.Save(change, settings, cancel);
          if (!saved) return saved.error();
          return told(*saved);
        });
}

void EmailManagerForm::Carry(bool asks_keyring, const Change& change) {
  Begin(tr("Stop"), asks_keyring ? tr("Asking the keyring…")
                                 : tr("Waiting for another window or program that is saving the account…"));
  pages_->setEnabled(false);
  test_->Start([this, change, file = program_.folders.settings](const platform::CancelToken& cancel) {
    profile::SettingsStore settings(file);
    auto became = std::make_shared<Result<Changed>>(change(settings, cancel));
    return [this, became] {
      End();
      Carried(*became);
    };
  });
}

// Where the keyring still has the password the window stays, so that this can be read, and shows what is stored now.
void EmailManagerForm::Carried(const Result<Changed>& became) {
  if (!became) {
    status_->Fail(became.error());
    return;
  }
  if (changed) changed(became->texts);
  if (!became->in_keyring) {
    QDialog::accept();
    return;
  }
  if (const auto stored = account::AccountSettings::Load(program_.settings)) {
    seen_ = *stored;
    Show(account::ShownInDialog(seen_));
  }
  status_->Fail(*became->in_keyring);
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
  const auto told = [](const Result<account::SecretsLeft>& left,
                       const profile::SettingsStore& settings) -> Result<Changed> {
    if (!left) return left.error();
    auto texts = account::TextsAfterReset(settings);
    if (!texts) return texts.error();
    return Changed{*std::move(texts), left->in_keyring};
  };
  if (const auto reset = secrets_.ResetAtOnce(program_.settings)) {
    Carried(told(*reset, program_.settings));
    return;
  }
  Carry(secrets_.ResettingAsksKeyring(program_.settings),
        [secrets = secrets_, told](auto& settings, const auto& cancel) {
          return told(secrets.Reset(settings, cancel), settings);
        });
}

// What the import wrote comes into the controls; what was typed into the others stays, but for a password that was on
// its way into the keyring for somebody else.
void EmailManagerForm::Import() {
  OutlookExpressForm form(program_, account_places ? account_places() : std::vector<account::AccountRoot>(), this);
  if (form.exec() != Accepted) return;
  const auto stored = account::AccountSettings::Load(program_.settings);
  if (!stored) {
    status_->Fail(stored.error());
    return;
  }
  account::AccountSettings shown = Shown();
  const std::string whose = account::WhomOf(shown);
  for (const account::AccountKey key : form.written()) {
    shown.Set(key, (*stored)[key]);
    seen_.Set(key, (*stored)[key]);
  }
  if (account::PlaceOfPassword(shown) == account::PasswordPlace::kKeyring && account::WhomOf(shown) != whose)
    shown.ForgetPassword();
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

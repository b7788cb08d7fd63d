// The dialog of the mail account.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>
#include <vector>

#include "account/account_change.h"
#include "account/account_settings.h"
#include "account/account_steps.h"
#include "account/import/find_accounts.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/qt_text.h"
#include "profile/program.h"

class QDialogButtonBox;
class QPushButton;
class QTabWidget;

namespace quillcast::desktop {

class FormGrid;
class NotePanel;
class PasswordBox;
class StatusLine;

// Shows the account as stored, changes it only at OK and at a reset; which controls can be used is account_form's to
// say.
class EmailManagerForm final : public QDialog {
  Q_OBJECT
 public:
  EmailManagerForm(const profile::Program& program, QWidget* parent);

  // Called with what the main window then shows, after OK and after a reset.
  std::function<void(const account::SenderTexts&)> changed;
  // Where other mail programs of this person keep their accounts; asked at an import. None at first.
  std::function<std::vector<account::AccountRoot>()> account_places;
  // Called with the sender's text once an account was imported, whatever becomes of this dialog.
  std::function<void(const std::string& from)> imported;
  // Turns to the page of the pace.
  void ShowPace();

 public slots:
  void accept() override;
  void reject() override;

 private:
  void AddRow(FormGrid* rows, account::AccountKey key, const QString& label);
  QWidget* MakeControl(const account::AccountKeyRow& row, const QString& label);
  std::vector<QWidget*> MakeBeside(account::AccountKey key, QWidget* control);
  void AddMethod(FormGrid* rows, std::size_t method, const QString& text);
  QWidget* MakeGeneralPage();
  QWidget* MakeMethodPage();
  QWidget* MakeMessagePage();
  QWidget* MakePacePage();
  QWidget* MakePresetBar();
  void AddButtons(QDialogButtonBox* box);

  void ReadStored();
  account::AccountSettings Shown() const;
  void Show(const account::AccountSettings& values);
  void Put(const account::AccountSettings& values);
  void ControlChanged();
  void OfferPreset();
  void FillInPreset();
  bool Check(const account::AccountChange& change);
  void TurnTo(QWidget* control);
  // What became of a change of the stored account.
  struct Changed {
    account::SenderTexts texts;
    std::optional<Error> in_keyring;
  };
  using Change = std::function<Result<Changed>(profile::SettingsStore&, const platform::CancelToken&)>;
  // Beside the window: it waits for the keyring, which may wait for the person, or for another who saves the account.
  void Carry(bool asks_keyring, const Change& change);
  void Carried(const Result<Changed>& became);
  void Reset();
  void Import();
  void PickFolder();
  void TestOrCancel();
  // While something is at work beside the window, the button named in the first ends it.
  void Begin(const QString& stop, const QString& status);
  void End();
  void TestFinished(const account::AccountTest& test);
  template <typename Control>
  Control* Find(std::string_view name) const {
    return findChild<Control*>(ToQt(name));
  }

  const profile::Program& program_;
  const account::AccountSecrets secrets_;
  BackgroundTask* test_;
  QTabWidget* pages_;
  QPushButton* test_button_ = nullptr;
  StatusLine* status_;
  NotePanel* preset_bar_ = nullptr;
  PasswordBox* password_ = nullptr;
  account::AccountSettings seen_;  // as it was stored when it came into the controls
  bool filling_ = false;
};

}  // namespace quillcast::desktop

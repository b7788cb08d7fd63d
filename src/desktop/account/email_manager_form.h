// The dialog of the mail account.
#pragma once

#include <QDialog>
#include <functional>
#include <vector>

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

  account::AccountSettings Shown() const;
  void Show(const account::AccountSettings& values);
  void Put(const account::AccountSettings& values);
  void ControlChanged();
  void OfferPreset();
  void FillInPreset();
  bool Check(const account::AccountSettings& shown);
  // What changes the stored account; beside the window where the keyring is asked, which may wait for the person.
  using Change = std::function<Result<account::SecretsLeft>(profile::SettingsStore&, const platform::CancelToken&)>;
  using Texts = std::function<Result<account::SenderTexts>()>;
  void Carry(const Change& change, bool asks_keyring, const Texts& texts);
  void Carried(const Result<account::SecretsLeft>& left, const Texts& texts);
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
  bool filling_ = false;
};

}  // namespace quillcast::desktop

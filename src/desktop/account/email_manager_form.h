// The dialog of the mail account.
#pragma once

#include <QDialog>
#include <QHash>
#include <functional>

#include "account/account_settings.h"
#include "account/account_steps.h"
#include "desktop/widgets/background_task.h"
#include "profile/program.h"

class QFormLayout;
class QLabel;
class QPushButton;
class QTabWidget;

namespace quillcast::desktop {

class EmailManagerForm final : public QDialog {
  Q_OBJECT
 public:
  EmailManagerForm(const profile::Program& program, QWidget* parent);

  // Called with what the main window then shows, after OK and after a reset.
  std::function<void(const account::SenderTexts&)> changed;

 public slots:
  void accept() override;
  void reject() override;

 private:
  void AddRow(QFormLayout* rows, account::AccountKey key, const QString& label);
  QWidget* MakeControl(const account::AccountKeyRow& row, const QString& label);
  QWidget* MakeGeneralPage();
  QWidget* MakeMethodPage();
  QWidget* MakeMessagePage();
  QWidget* MakePresetBar();
  QWidget* MakeButtons();

  account::AccountSettings Shown() const;
  void Show(const account::AccountSettings& values);
  void Put(const account::AccountSettings& values);
  void ControlChanged();
  void OfferPreset();
  bool Check(const account::AccountSettings& shown);
  void Reset();
  void PickFolder();
  void TestOrCancel();
  void TestFinished(const account::AccountTest& test);
  template <typename Control>
  Control* Find(std::string_view name) const;

  const profile::Program& program_;
  BackgroundTask* test_;
  QTabWidget* pages_;
  QPushButton* test_button_ = nullptr;
  QLabel* status_ = nullptr;
  QWidget* preset_bar_ = nullptr;
  QLabel* preset_text_ = nullptr;
  QHash<QString, QLabel*> labels_;  // by the name of their control
  bool filling_ = false;
};

}  // namespace quillcast::desktop

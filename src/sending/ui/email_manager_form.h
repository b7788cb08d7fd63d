// The dialog of the mail account.
#pragma once

#include <QDialog>
#include <QHash>
#include <functional>

#include "app/program.h"
#include "platform/ui/background_task.h"
#include "sending/account_settings.h"
#include "sending/account_steps.h"

class QFormLayout;
class QLabel;
class QPushButton;
class QTabWidget;

namespace quillcast::sending {

class EmailManagerForm final : public QDialog {
  Q_OBJECT
 public:
  EmailManagerForm(const app::Program& program, QWidget* parent);

  // Called with what the main window then shows, after OK and after a reset.
  std::function<void(const SenderTexts&)> changed;

 public slots:
  void accept() override;
  void reject() override;

 private:
  void AddRow(QFormLayout* rows, AccountKey key, const QString& label);
  QWidget* MakeControl(const AccountKeyRow& row, const QString& label);
  QWidget* MakeGeneralPage();
  QWidget* MakeMethodPage();
  QWidget* MakeMessagePage();
  QWidget* MakePresetBar();
  QWidget* MakeButtons();

  AccountSettings Shown() const;
  void Show(const AccountSettings& values);
  void Put(const AccountSettings& values);
  void ControlChanged();
  void OfferPreset();
  bool Check(const AccountSettings& shown);
  void Reset();
  void PickFolder();
  void TestOrCancel();
  void TestFinished(const AccountTest& test);
  template <typename Control>
  Control* Find(std::string_view name) const;

  const app::Program& program_;
  platform::BackgroundTask* test_;
  QTabWidget* pages_;
  QPushButton* test_button_ = nullptr;
  QLabel* status_ = nullptr;
  QWidget* preset_bar_ = nullptr;
  QLabel* preset_text_ = nullptr;
  QHash<QString, QLabel*> labels_;  // by the name of their control
  bool filling_ = false;
};

}  // namespace quillcast::sending

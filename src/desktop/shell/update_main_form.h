// Asks, when the person says so, whether there is a newer version.
#pragma once

#include <QDialog>

#include "platform/environment.h"
#include "profile/program.h"
#include "update/update_check.h"

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class FormColumn;
class StatusLine;

class UpdateMainForm final : public QDialog {
  Q_OBJECT
 public:
  // The environment says whom to ask: see update::QuestionOf.
  UpdateMainForm(const profile::Program& program, const platform::Environment& environment, QWidget* parent);
  ~UpdateMainForm() override;

 private:
  void BuildWindow();
  void AddProxy(FormColumn& column);
  void ShowSettings();
  update::UpdateSettings Collect() const;
  bool TakeSettings(const update::UpdateSettings& settings);
  void Check();
  void Tell(const Result<update::Answer>& answer);

  const profile::Program& program_;
  const platform::Environment& environment_;
  BackgroundTask* task_;
  QCheckBox* proxy_;
  QLineEdit* address_;
  QLineEdit* port_;
  QLineEdit* timeout_;
  StatusLine* status_;
  QPushButton* check_;  // cancels while it asks
};

}  // namespace quillcast::desktop

// The tip of the day, one at a time.
#pragma once

#include <QDialog>

#include "help/tips.h"
#include "profile/program.h"

class QCheckBox;
class QLabel;

namespace quillcast::desktop {

class TipsForm final : public QDialog {
  Q_OBJECT
 public:
  TipsForm(const profile::Program& program, QWidget* parent);

  // Whether it shows at the start; on request it always does.
  static bool IsWanted(const profile::SettingsStore& settings, bool on_request);

 public slots:
  void done(int result) override;

 private:
  void BuildWindow();
  void ShowTip(help::TipPlace tip);

  const profile::Program& program_;
  help::TipPlace tip_;
  QLabel* series_;
  QLabel* text_;
  QCheckBox* at_start_;
};

}  // namespace quillcast::desktop

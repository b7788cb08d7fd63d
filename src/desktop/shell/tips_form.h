// Three tips, one at a time.
#pragma once

#include <QDialog>

#include "profile/settings_store.h"

class QCheckBox;
class QLabel;

namespace quillcast::desktop {

class TipsForm final : public QDialog {
  Q_OBJECT
 public:
  TipsForm(profile::SettingsStore& settings, QWidget* parent);

  // Whether it shows at the start; on request it always does.
  static bool IsWanted(const profile::SettingsStore& settings, bool on_request);

 public slots:
  void done(int result) override;

 private:
  void ShowTip(int tip);

  profile::SettingsStore& settings_;
  int tip_ = 1;
  QLabel* text_;
  QCheckBox* at_start_;
};

}  // namespace quillcast::desktop

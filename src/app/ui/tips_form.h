// Three tips, one at a time.
#pragma once

#include <QDialog>

#include "app/settings_store.h"

class QCheckBox;
class QLabel;

namespace quillcast::app {

class TipsForm final : public QDialog {
  Q_OBJECT
 public:
  TipsForm(SettingsStore& settings, QWidget* parent);

  // Whether it shows at the start; on request it always does.
  static bool IsWanted(const SettingsStore& settings, bool on_request);

 public slots:
  void done(int result) override;

 private:
  void ShowTip(int tip);

  SettingsStore& settings_;
  int tip_ = 1;
  QLabel* text_;
  QCheckBox* at_start_;
};

}  // namespace quillcast::app

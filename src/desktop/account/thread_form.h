// The dialog of the threading modes.
#pragma once

#include <QDialog>

#include "account/thread_modes.h"
#include "profile/settings_store.h"

namespace quillcast::desktop {

// OK stores all three modes; where that fails it says why and stays.
class ThreadForm final : public QDialog {
  Q_OBJECT
 public:
  ThreadForm(profile::SettingsStore& settings, QWidget* parent);

 public slots:
  void accept() override;

 private:
  profile::SettingsStore& settings_;
};

}  // namespace quillcast::desktop

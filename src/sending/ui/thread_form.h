// The dialog of the threading modes.
#pragma once

#include <QDialog>

#include "app/settings_store.h"
#include "sending/thread_modes.h"

namespace quillcast::sending {

class ThreadForm final : public QDialog {
  Q_OBJECT
 public:
  ThreadForm(app::SettingsStore& settings, QWidget* parent);

 public slots:
  void accept() override;

 private:
  app::SettingsStore& settings_;
};

}  // namespace quillcast::sending

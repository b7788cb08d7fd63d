// The window that is shown while the program starts.
#pragma once

#include <QWidget>
#include <string_view>

#include "profile/settings_store.h"

class QProgressBar;

namespace quillcast::desktop {

class SplashForm final : public QWidget {
  Q_OBJECT
 public:
  explicit SplashForm(std::string_view system_name);

  // The setting `Options` `Splash`; on unless it is "0".
  static bool IsWanted(const profile::SettingsStore& settings);
  static Result<void> SetWanted(profile::SettingsStore& settings, bool wanted);

  // Shows it without waiting, and steps its progress from 1 to 500.
  void Run();

 private:
  QProgressBar* progress_;
};

}  // namespace quillcast::desktop

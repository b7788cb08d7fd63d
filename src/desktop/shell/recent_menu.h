// The submenu of the documents that were open last.
#pragma once

#include <QMenu>
#include <filesystem>

#include "profile/settings_store.h"

namespace quillcast::desktop {

// Filled whenever it opens: another window of the program may have opened some meanwhile.
class RecentMenu final : public QMenu {
  Q_OBJECT
 public:
  RecentMenu(profile::SettingsStore& settings, QWidget* parent);

 signals:
  void Picked(const std::filesystem::path& file);
  void Failed(const quillcast::Error& error);

 private:
  void Fill();
  void AddDocument(const std::filesystem::path& file, int number);

  profile::SettingsStore& settings_;
};

}  // namespace quillcast::desktop

// A message file in a window of its own, with what can be done with it.
#pragma once

#include <QDialog>
#include <filesystem>

#include "desktop/mail_file/message_tools.h"
#include "profile/settings_store.h"

namespace quillcast::desktop {

class MessageForm final : public QDialog {
  Q_OBJECT
 public:
  MessageForm(const profile::SettingsStore& settings, const std::filesystem::path& file, MessageTools tools,
              QWidget* parent);
};

}  // namespace quillcast::desktop

// A message file in a window of its own, with what can be done with it.
#pragma once

#include <QDialog>
#include <filesystem>
#include <functional>

#include "profile/settings_store.h"

class QPushButton;

namespace quillcast::desktop {

class MessageView;

// What the buttons do with the file: each opens its dialog. All are set.
struct MessageTools {
  using Tool = std::function<void(const std::filesystem::path& file, QWidget* parent)>;
  Tool extract;
  Tool take_over;  // into the message that is being written
  Tool print;
};

class MessageForm final : public QDialog {
  Q_OBJECT
 public:
  MessageForm(const profile::SettingsStore& settings, std::filesystem::path file, MessageTools tools, QWidget* parent);

 private:
  QPushButton* AddTool(const char* name, const QString& text, MessageTools::Tool tool);

  std::filesystem::path file_;
};

}  // namespace quillcast::desktop

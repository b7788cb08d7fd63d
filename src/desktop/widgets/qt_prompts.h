// The person at the desktop: message boxes and file dialogs over the active window.
#pragma once

#include <QString>

#include "platform/prompts.h"

namespace quillcast::desktop {

// "HTML Files (*.html;*.htm)|*.html;*.htm|All Files (*.*)|*.*" as Qt's file dialog takes it.
QString FileDialogFilter(std::string_view filter);

// Takes the question that is open back, where what it asks about is over: it counts as answered with No.
void WithdrawQuestion();

class QtPrompts final : public platform::Prompts {
 public:
  explicit QtPrompts(QString title) : title_(std::move(title)) {}

  void Warn(std::string_view text) override;
  void Inform(std::string_view text) override;
  void Critical(std::string_view text) override;
  platform::Answer Ask(std::string_view text) override;
  platform::Answer AskOrCancel(std::string_view text) override;
  bool Consent(std::string_view text) override;
  std::vector<std::filesystem::path> PickOpenFile(const platform::FileQuestion& question) override;
  std::filesystem::path PickSaveFile(const platform::FileQuestion& question) override;
  std::filesystem::path PickFolder(std::string_view title) override;

 private:
  QString title_;
};

}  // namespace quillcast::desktop

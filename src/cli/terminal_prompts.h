// The person at the terminal: messages go to standard error, questions are asked there when somebody can answer.
#pragma once

#include "platform/prompts.h"

namespace quillcast::cli {

// With --yes the first choice is taken without asking; without anybody to ask it is No, or Cancel where that is
// offered.
class TerminalPrompts final : public platform::Prompts {
 public:
  bool assume_yes = false;  // --yes
  bool may_ask = true;      // standard input is a terminal and --no-input was not given

  void Warn(std::string_view text) override { Show(text); }
  void Inform(std::string_view text) override { Show(text); }
  void Critical(std::string_view text) override { Show(text); }
  platform::Answer Ask(std::string_view text) override;
  platform::Answer AskOrCancel(std::string_view text) override;
  bool Consent(std::string_view text) override;
  // Files are named on the command line, never picked.
  std::vector<std::filesystem::path> PickOpenFile(const platform::FileQuestion&) override { return {}; }
  std::filesystem::path PickSaveFile(const platform::FileQuestion&) override { return {}; }
  std::filesystem::path PickFolder(std::string_view) override { return {}; }

 private:
  static void Show(std::string_view text);
  // The first letter of the answer in lower case; 0 when nobody answered.
  char AskFor(std::string_view text, std::string_view choices) const;
};

}  // namespace quillcast::cli

// A person for the tests: answers are given beforehand, and what was shown is kept as "kind: text" lines.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/prompts.h"

namespace quillcast::test {

class ScriptedPrompts final : public platform::Prompts {
 public:
  std::vector<std::string> shown;
  std::deque<platform::Answer> answers;  // for Ask, AskOrCancel and Consent (kYes); kNo when used up
  std::vector<std::filesystem::path> files;
  platform::FileQuestion last_file_question;
  std::function<void()> meanwhile;  // happens once, while the next question stands

  void Warn(std::string_view text) override { Show("warn", text); }
  void Inform(std::string_view text) override { Show("inform", text); }
  void Critical(std::string_view text) override { Show("critical", text); }
  platform::Answer Ask(std::string_view text) override { return Show("ask", text), NextAnswer(); }
  platform::Answer AskOrCancel(std::string_view text) override { return Show("ask or cancel", text), NextAnswer(); }
  bool Consent(std::string_view text) override { return Show("consent", text), NextAnswer() == platform::Answer::kYes; }
  std::vector<std::filesystem::path> PickOpenFile(const platform::FileQuestion& question) override {
    Show("open", question.title);
    return files;
  }
  std::filesystem::path PickSaveFile(const platform::FileQuestion& question) override {
    Show("save", question.title);
    last_file_question = question;
    return files.empty() ? std::filesystem::path() : files.front();
  }
  std::filesystem::path PickFolder(std::string_view title) override {
    Show("folder", title);
    return files.empty() ? std::filesystem::path() : files.front();
  }

 private:
  void Show(const char* kind, std::string_view text) { shown.push_back(std::string(kind) + ": " + std::string(text)); }
  platform::Answer NextAnswer() {
    if (const auto happens = std::exchange(meanwhile, nullptr)) happens();
    if (answers.empty()) return platform::Answer::kNo;
    const auto answer = answers.front();
    answers.pop_front();
    return answer;
  }
};

}  // namespace quillcast::test

// How the core asks and tells the person. Adapters: the terminal, the desktop, and a scripted one in the tests.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::platform {

// kCancel is given by AskOrCancel alone.
enum class Answer { kYes, kNo, kCancel };

// What a file dialog is opened with.
struct FileQuestion {
  std::string title;
  std::string filter;     // "HTML Files (*.html;*.htm)|*.html;*.htm|All Files (*.*)|*.*"
  std::string name = {};  // proposed for a file to save to; none where it is empty
  bool several = false;
  bool ask_before_overwriting = false;
};

// Each call waits for the person; where nobody can answer, it comes back with what is said there.
class Prompts {
 public:
  virtual ~Prompts() = default;

  virtual void Warn(std::string_view text) = 0;      // exclamation icon, OK
  virtual void Inform(std::string_view text) = 0;    // information icon, OK
  virtual void Critical(std::string_view text) = 0;  // critical-stop icon, OK

  // A question box with Yes and No. kNo when nobody is there to answer.
  virtual Answer Ask(std::string_view text) = 0;
  // The same with Cancel beside them. kCancel when nobody is there to answer.
  virtual Answer AskOrCancel(std::string_view text) = 0;
  // A question box with OK and Cancel; true for OK.
  virtual bool Consent(std::string_view text) = 0;

  // Empty when nothing was picked.
  virtual std::vector<std::filesystem::path> PickOpenFile(const FileQuestion& question) = 0;
  virtual std::filesystem::path PickSaveFile(const FileQuestion& question) = 0;
  virtual std::filesystem::path PickFolder(std::string_view title) = 0;
};

}  // namespace quillcast::platform

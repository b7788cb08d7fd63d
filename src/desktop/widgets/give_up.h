// A dialog that is closed while it works asks first, and goes when the work has ended.
#pragma once

#include <functional>
#include <string_view>

#include "platform/prompts.h"

class QDialog;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;

// The work may end while the question stands: its end is then told once the question is out of the way.
class GiveUp final {
 public:
  // `button` is what cancels; it can be pressed once.
  GiveUp(QDialog& dialog, BackgroundTask& task, QPushButton& button, platform::Prompts& prompts)
      : dialog_(dialog), task_(task), button_(button), prompts_(prompts) {}

  // In place of QDialog::reject(): true where nothing runs, so that the dialog may close.
  bool MayClose(std::string_view question);
  // When the work has ended: what tells of it, which is not called where it was given up and the dialog closes.
  void End(std::function<void()> tell);

 private:
  QDialog& dialog_;
  BackgroundTask& task_;
  QPushButton& button_;
  platform::Prompts& prompts_;
  bool is_asking_ = false;
  bool is_given_up_ = false;
  std::function<void()> ended_meanwhile_;
};

}  // namespace quillcast::desktop

#include "desktop/widgets/give_up.h"

#include <QDialog>
#include <QPushButton>
#include <utility>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/qt_prompts.h"

namespace quillcast::desktop {

bool GiveUp::MayClose(std::string_view question) {
  if (!task_.is_running()) return true;
  if (is_asking_ || is_given_up_) return false;
  is_asking_ = true;
  const auto answer = prompts_.Ask(question);
  is_asking_ = false;
  if (ended_meanwhile_) {
    std::exchange(ended_meanwhile_, nullptr)();
    return false;
  }
  if (answer != platform::Answer::kYes) return false;
  is_given_up_ = true;
  button_.setEnabled(false);
  task_.Cancel();
  return false;
}

void GiveUp::End(std::function<void()> tell) {
  if (is_asking_) {
    ended_meanwhile_ = std::move(tell);
    WithdrawQuestion();
  } else if (is_given_up_) {
    dialog_.done(QDialog::Rejected);
  } else {
    tell();
  }
}

}  // namespace quillcast::desktop

// The commands of the Help menu.
#include "account/account_settings.h"
#include "desktop/shell/about_form.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/help_form.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/shell/shell.h"
#include "desktop/shell/tips_form.h"
#include "desktop/shell/tutorial_form.h"
#include "desktop/shell/update_main_form.h"
#include "desktop/support/support_form.h"
#include "platform/environment.h"
#include "support/support_request.h"

namespace quillcast::desktop {

void ShowHelp(Shell& shell) {
  HelpForm* help = HelpOver(shell.window);
  if (help == nullptr) help = new HelpForm(shell.program.folders, kWelcomeTopic, &shell.window);
  BringToFront(*help);
}

// One at a time: the same command brings it back to the front.
void ShowTutorial(Shell& shell) {
  auto* open = shell.window.findChild<TutorialForm*>();
  if (open == nullptr) open = new TutorialForm(shell);
  open->show();
  open->raise();
  open->activateWindow();
}

void ShowTips(Shell& shell) { TipsForm(shell.program, &shell.window).exec(); }

void AskForSupport(Shell& shell) {
  shell.notices.LookAtPractice();
  const auto filled_in = account::AccountIsFilledIn(shell.program.settings);
  if (!filled_in) return shell.Tell(filled_in.error());
  if (!*filled_in) {
    shell.program.prompts.Warn(support::kNoAccount);
    return EditAccount(shell);
  }
  const platform::ProcessEnvironment environment;
  const bool practises = shell.practice.practice().Serves();
  const auto server = practises ? SupportForm::Server::kPractice : SupportForm::Server::kReal;
  SupportForm(shell.program, environment, shell.header.Priority(), server, &shell.window).exec();
}

void CheckForUpdates(Shell& shell) {
  const platform::ProcessEnvironment environment;
  UpdateMainForm(shell.program, environment, &shell.window).exec();
}

void OpenHomePage(Shell& shell) { shell.Tell(shell.program.desktop.OpenPage(update::kHomePage)); }

void ShowAbout(Shell& shell) {
  const platform::ProcessEnvironment environment;
  AboutForm(shell.program.folders, environment, &shell.window).exec();
}

}  // namespace quillcast::desktop

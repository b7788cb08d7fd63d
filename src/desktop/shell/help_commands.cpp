// The commands of the Help menu.
#include "account/account_settings.h"
#include "desktop/shell/about_form.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/help_form.h"
#include "desktop/shell/shell.h"
#include "desktop/shell/tips_form.h"

namespace quillcast::desktop {

void ShowHelp(Shell& shell) { (new HelpForm(shell.program.folders, kWelcomeTopic, &shell.window))->show(); }

void ShowTips(Shell& shell) { TipsForm(shell.program.settings, &shell.window).exec(); }

void AskForSupport(Shell& shell) {
  const auto filled_in = account::AccountIsFilledIn(shell.program.settings);
  if (filled_in && *filled_in) {
    SayNotBuilt(shell, CommandId::kSupport);
    return;
  }
  shell.program.prompts.Warn("Please fill out the Mail Account section in Email Manager.");
  EditAccount(shell);
}

void ShowAbout(Shell& shell) { AboutForm(&shell.window).exec(); }

void SayNotBuilt(Shell& shell, CommandId id) {
  shell.Say(Shell::tr("%1: this version does not have that yet.").arg(NameOf(RowOf(id))));
}

}  // namespace quillcast::desktop

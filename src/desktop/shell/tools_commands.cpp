// The commands of the Tools menu.
#include "account/import/find_accounts.h"
#include "desktop/account/email_manager_form.h"
#include "desktop/account/thread_form.h"
#include "desktop/document/body_view.h"
#include "desktop/document/signature_manager_form.h"
#include "desktop/domain/domain_tools_form.h"
#include "desktop/domain/extra_form5.h"
#include "desktop/mail_file/extra_form4.h"
#include "desktop/recipients/group_manager_form.h"
#include "desktop/recipients/recipient_export_form.h"
#include "desktop/recipients/recipient_import_form.h"
#include "desktop/shell/command_bar.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/shell.h"
#include "desktop/shell/splash_form.h"
#include "desktop/widgets/qt_text.h"
#include "platform/environment.h"

namespace quillcast::desktop {

namespace {

enum class FirstPage { kGeneral, kPace };

void ShowAccount(Shell& shell, QWidget* over, FirstPage page) {
  EmailManagerForm form(shell.program, over);
  form.changed = [&shell](const account::SenderTexts& texts) {
    shell.header.ShowSender(ToQt(texts.from), ToQt(texts.method));
  };
  form.account_places = [] { return account::AccountRoots(platform::ProcessEnvironment()); };
  form.imported = [&shell](const std::string& from) { shell.header.ShowSender(ToQt(from)); };
  if (page == FirstPage::kPace) form.ShowPace();
  form.exec();
  shell.notices.LookAtPractice();
  shell.notices.Refresh();
}

}  // namespace

void EditAccount(Shell& shell) { ShowAccount(shell, &shell.window, FirstPage::kGeneral); }

void EditPace(Shell& shell, QWidget* over) { ShowAccount(shell, over, FirstPage::kPace); }

void ShowGroups(Shell& shell) {
  GroupManagerForm form(shell.program, &shell.window);
  QObject::connect(&form, &GroupManagerForm::GroupsChanged, &shell.window,
                   [&shell](const QString& before, const QString& now) {
                     if (!before.isEmpty() && now.isEmpty()) shell.header.ChooseNoGroup();
                     // A new group is nobody's choice yet: whom the message goes to stays as it is.
                     const bool was_chosen = !before.isEmpty() && shell.header.Group() == before;
                     shell.header.LoadGroups(was_chosen ? now : QString());
                   });
  form.exec();
  shell.header.LoadGroups();
}

void ImportRecipients(Shell& shell) {
  if (!shell.header.HasGroups()) {
    shell.program.prompts.Warn("There is no group to import the data to.");
    shell.FocusOn("GroupButton");
    return;
  }
  RecipientImportForm form(shell.program, shell.header.Group(), &shell.window);
  form.exec();
  if (!form.said().isEmpty()) shell.Say(form.said());
  shell.header.LoadGroups();
}

void ExportRecipients(Shell& shell) {
  if (shell.header.HasGroups()) {
    RecipientExportForm(shell.program, shell.header.Group(), &shell.window).exec();
    return;
  }
  shell.program.prompts.Warn("There is no group to export the data from.");
  shell.FocusOn("GroupButton");
}

void EditSignature(Shell& shell) {
  SignatureManagerForm(shell.program, &shell.window).exec();
  shell.body.setFocus();
}

void ShowThreads(Shell& shell) { ThreadForm(shell.program.settings, &shell.window).exec(); }

void SwitchSplash(Shell& shell) {
  auto& settings = shell.program.settings;
  shell.Tell(SplashForm::SetWanted(settings, !SplashForm::IsWanted(settings)));
  shell.bar.ShowSplash(SplashForm::IsWanted(settings));
}

void ShowDomainTools(Shell& shell) { DomainToolsForm(shell.program, &shell.window).exec(); }

void TestServer(Shell& shell) { ExtraForm5(shell.program, &shell.window).exec(); }

void ExtractFromMessages(Shell& shell) { ExtraForm4(shell.program, &shell.window).exec(); }

}  // namespace quillcast::desktop

// The commands of the Message menu.
#include "account/account_settings.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/run/history_manager_form.h"
#include "desktop/run/preview_form.h"
#include "desktop/run/send_mail_form1.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"
#include "recipients/group_count.h"
#include "run/message_preview.h"
#include "run/pre_send_checks.h"

namespace quillcast::desktop {
namespace {

// What a mailing to the chosen group needs.
struct Mailing {
  document::MessageDocument document;
  recipients::RecipientGroup group;
  std::int64_t recipients = 0;
};

// Nothing where something could not be read or a check failed: the person was told, and the control that it is about
// has the focus.
std::optional<Mailing> Check(Shell& shell) {
  Mailing mailing;
  mailing.document = shell.Message();
  const auto& program = shell.program;
  const recipients::RecipientStore store(program.folders.Database(), profile::kWindowPatience);
  const auto filled_in = account::AccountIsFilledIn(program.settings);
  auto groups = store.ListGroupNames();
  const std::string name = FromQt(shell.header.Group());
  const auto group = store.FindGroup(name);
  const auto count = store.CountRecipients(name);
  for (const Error* error : {filled_in ? nullptr : &filled_in.error(), groups ? nullptr : &groups.error(),
                             group ? nullptr : &group.error(), count ? nullptr : &count.error()}) {
    if (error == nullptr) continue;
    shell.Tell(*error);
    return {};
  }
  const run::MailingFacts facts{.account_filled_in = *filled_in,
                                .groups = std::move(*groups),
                                .group = name,
                                .recipients = *count,
                                .subject = mailing.document.subject,
                                .body_text = mailing.document.PlainText()};
  if (const auto control = run::CheckBeforeSending(facts, program.prompts)) {
    shell.FocusOn(ToQt(*control));
    return {};
  }
  mailing.group = **group;
  mailing.recipients = *count;
  return mailing;
}

}  // namespace

void PreviewAsMail(Shell& shell) {
  const auto& program = shell.program;
  const auto account = account::AccountSettings::Load(program.settings);
  if (!account) {
    shell.Tell(account.error());
    return;
  }
  const auto preview =
      run::WritePreview(program.folders, program.settings, shell.Message(), *account, program.clock, program.entropy);
  if (!preview) {
    shell.Tell(preview.error());
    return;
  }
  for (const auto& note : preview->notes) shell.Say(ToQt(note));
  shell.Tell(program.desktop.OpenFile(preview->file));
}

void PreviewInside(Shell& shell) {
  const recipients::RecipientStore store(shell.program.folders.Database(), profile::kWindowPatience);
  const std::string name = FromQt(shell.header.Group());
  const auto group = store.FindGroup(name);
  if (!group && group.error().failure == Failure::kTryAgain) {
    shell.Say(InWords(group.error()));
    return;
  }
  const bool is_there = group && *group;
  PreviewForm form(shell.program, shell.Message(), is_there ? **group : recipients::RecipientGroup(),
                   is_there ? recipients::GroupCount(store, name) : 0, shell.editor.base(), &shell.window);
  form.exec();
  shell.TakePictureAnswers(form.picture_places());
}

void Send(Shell& shell) {
  auto mailing = Check(shell);
  if (!mailing) return;
  SendMailForm1 form(
      shell.program,
      {std::move(mailing->document), mailing->group, mailing->recipients, shell.practice.practice().Serves()},
      &shell.window);
  form.skip_save_prompt = [&shell](bool skip) { shell.skip_save_prompt = skip; };
  form.exec();
  shell.TakePictureAnswers(form.picture_places());
  if (!form.refusal().isEmpty()) shell.Say(form.refusal());
  if (form.shuts_down()) shell.window.close();
}

void ShowHistory(Shell& shell) {
  HistoryManagerForm form(shell.program, &shell.window);
  form.exec();
  if (!form.cleared().isEmpty()) shell.Say(form.cleared());
}

}  // namespace quillcast::desktop

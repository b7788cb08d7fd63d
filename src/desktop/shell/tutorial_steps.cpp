#include "desktop/shell/tutorial_steps.h"

#include "account/account_settings.h"
#include "account/practice.h"
#include "desktop/document/editor_document.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/shell/shell.h"
#include "desktop/shell/tutorial_form.h"

namespace quillcast::desktop {
namespace {

using help::TutorialStep;

// What the window behind offers follows what is found.
Result<void> MayPractise(Shell& shell) {
  shell.notices.LookAtPractice();
  const auto filled_in = account::AccountIsFilledIn(shell.program.settings);
  return filled_in ? help::MayPractise(*filled_in, shell.practice.practice().Serves()) : filled_in.error();
}

Result<void> SwitchPracticeOn(Shell& shell) {
  auto may = MayPractise(shell);
  return may && !shell.practice.practice().Serves() ? shell.notices.BeginPractice() : may;
}

Result<void> MakeGroup(Shell& shell) {
  recipients::RecipientStore store(shell.program.folders.Database(), profile::kWindowPatience);
  auto made = help::MakeTutorialGroup(store);
  if (made) shell.header.LoadGroups(help::kTutorialGroup);
  return made;
}

// The group stays; a new message would choose none.
Result<void> WriteLetter(Shell& shell) {
  const QString group = shell.header.Group();
  if (!BeginMessage(shell)) return {};
  shell.header.LoadGroups(group);
  shell.header.SetSubject(help::kTutorialLetter.subject);
  return shell.document.StartFrom(help::kTutorialLetter.html);
}

// Where practice cannot be switched on, nobody is sent back to do it.
Result<void> OpenSending(Shell& shell) {
  if (auto may = MayPractise(shell); !may) return may;
  if (!shell.practice.practice().Serves()) {
    return Error{Failure::kNotPermitted, "Practice is off, so these letters would go to a real server.",
                 "Go back two pages or more, and switch practice on."};
  }
  Send(shell);
  return {};
}

std::size_t Arrived(Shell& shell) { return account::PracticeMessages(shell.practice.practice().folder()).size(); }

Result<void> ShowArrived(Shell& shell) {
  auto may = Arrived(shell) > 0 ? Result<void>() : MayPractise(shell);
  if (may) ShowPracticeMailbox(shell);
  return may;
}

bool HasSubject(Shell& shell) {
  document::MessageDocument message;
  shell.header.Collect(message);
  return !message.subject.empty();
}

}  // namespace

Result<void> DoStep(Shell& shell, TutorialStep step) {
  switch (step) {
    case TutorialStep::kWelcome:
      break;
    case TutorialStep::kPractice:
      return SwitchPracticeOn(shell);
    case TutorialStep::kGroup:
      return MakeGroup(shell);
    case TutorialStep::kLetter:
      return WriteLetter(shell);
    case TutorialStep::kPreview:
      PreviewInside(shell);
      break;
    case TutorialStep::kSend:
      return OpenSending(shell);
    case TutorialStep::kArrived:
      return ShowArrived(shell);
    case TutorialStep::kReal:
      if (shell.practice.practice().is_on()) shell.notices.EndPractice();
      break;
  }
  return {};
}

QString DoneText(Shell& shell, TutorialStep step) {
  switch (step) {
    case TutorialStep::kPractice:
      return shell.practice.practice().Serves() ? TutorialForm::tr("Practice is on.") : QString();
    case TutorialStep::kGroup:
      return shell.header.Group().isEmpty() ? QString()
                                            : TutorialForm::tr("The letter goes to %1.").arg(shell.header.Group());
    case TutorialStep::kLetter:
      return HasSubject(shell) ? TutorialForm::tr("The letter has a subject.") : QString();
    case TutorialStep::kSend:
    case TutorialStep::kArrived:
      return Arrived(shell) > 0 ? TutorialForm::tr("Letters have arrived.") : QString();
    case TutorialStep::kReal:
      return shell.practice.practice().is_on() ? QString() : TutorialForm::tr("Practice is off.");
    case TutorialStep::kWelcome:
    case TutorialStep::kPreview:
      break;
  }
  return {};
}

}  // namespace quillcast::desktop

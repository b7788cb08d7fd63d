// The commands of the Message menu.
#include <QApplication>
#include <functional>
#include <optional>

#include "desktop/document/body_view.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/run/history_manager_form.h"
#include "desktop/run/kept_runs_form.h"
#include "desktop/run/preview_form.h"
#include "desktop/run/send_mail_form1.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"
#include "run/prepared_run.h"

namespace quillcast::desktop {
namespace {

// The run of the message to the chosen group, with as much patience as the window has.
Result<run::PreparedRun> Prepare(Shell& shell, document::MessageDocument message, const platform::CancelToken& never) {
  return run::Prepare(std::move(message), FromQt(shell.header.Group()),
                      run::PlaceOf(shell.program, never, profile::kWindowPatience));
}

// Where the window has it.
const char* NameOf(run::SendControl control) {
  switch (control) {
    case run::SendControl::kAccount:
      return "EmailButton";
    case run::SendControl::kGroup:
      return "GroupButton";
    case run::SendControl::kSubject:
      return "SubjectTextBox";
    case run::SendControl::kBody:
      break;
  }
  return "Editor";
}

}  // namespace

void PreviewAsMail(Shell& shell) {
  const platform::CancelToken never;
  auto message = shell.Message();
  if (!message) return shell.Tell(message.error());
  const auto place = run::PlaceOf(shell.program, never, profile::kWindowPatience);
  const auto preview = run::Prepare(*std::move(message), run::ChosenGroup(), place).WritePreview();
  if (!preview) {
    shell.Tell(preview.error());
    return;
  }
  for (const auto& note : preview->notes) shell.Say(InWords(note));
  shell.Tell(shell.program.desktop.OpenFile(preview->file));
}

void PreviewInside(Shell& shell) {
  const platform::CancelToken never;
  const auto message = shell.Message();
  if (!message) return shell.Tell(message.error());
  const auto prepared = Prepare(shell, *message, never);
  if (!prepared && prepared.error().failure == Failure::kTryAgain) {
    shell.Say(InWords(prepared.error()));
    return;
  }
  PreviewForm form(shell.program, *message, prepared ? prepared->group() : run::ChosenGroup(), shell.editor.base(),
                   &shell.window);
  form.exec();
  shell.TakePictureAnswers(form.picture_places());
  shell.body.setFocus();
}

void Send(Shell& shell) {
  shell.notices.LookAtPractice();
  const platform::CancelToken never;
  auto message = shell.Message();
  if (!message) return shell.Tell(message.error());
  shell.AskAboutPictures();
  auto prepared = Prepare(shell, *std::move(message), never);
  const auto facts = prepared ? prepared->Facts() : prepared.error();
  if (!facts) {
    shell.Tell(facts.error());
    return;
  }
  if (const auto refused = run::CheckBeforeSending(*facts, shell.program.prompts)) {
    shell.FocusOn(NameOf(refused->control));
    return;
  }
  using Server = SendMailForm1::Server;
  SendMailForm1 form(shell.program, prepared->document(), prepared->group(),
                     shell.practice.practice().Serves() ? Server::kPractice : Server::kReal, &shell.window);
  form.skip_save_prompt = [&shell](bool skip) { shell.skip_save_prompt = skip; };
  form.refused = [&shell](const QString& why) { shell.Say(why); };
  form.OfferAccount([&shell](QWidget* over) { EditPace(shell, over); });
  form.exec();
  shell.TakePictureAnswers(form.picture_places());
  if (const auto run = form.runs_wanted()) ShowKeptRuns(shell, *run);
  shell.notices.LookForCutOff();  // the network may have stayed away
  if (form.shuts_down()) shell.window.close();
}

// Where the window of the runs is asked for, it stands behind with this run chosen.
void GoOnWithRun(Shell& shell, const GoOnRequest& request) {
  shell.notices.LookAtPractice();
  using Server = SendMailForm1::Server;
  SendMailForm1 form(shell.program, request, shell.practice.practice().Serves() ? Server::kPractice : Server::kReal,
                     QApplication::activeWindow());
  form.skip_save_prompt = [&shell](bool skip) { shell.skip_save_prompt = skip; };
  form.refused = [&shell](const QString& why) { shell.Say(why); };
  form.OfferAccount([&shell](QWidget* over) { EditPace(shell, over); });
  form.exec();
  if (form.shuts_down()) shell.window.close();
}

namespace {

void ShowRuns(Shell& shell, const std::function<void(KeptRunsForm&)>& choose, const std::function<void()>& sent) {
  QWidget* parent = QApplication::activeWindow();
  KeptRunsForm form(shell.program, parent == nullptr ? &shell.window : parent);
  form.go_on = [&shell, &sent](const GoOnRequest& request) {
    GoOnWithRun(shell, request);
    sent();
  };
  choose(form);
  form.exec();
  shell.notices.LookForCutOff();
}

}  // namespace

void ShowKeptRuns(Shell& shell, run::RunId run) {
  ShowRuns(
      shell, [run](KeptRunsForm& form) { form.Choose(run); }, [] {});
}

void ShowHistory(Shell& shell) {
  HistoryManagerForm form(shell.program, &shell.window);
  form.show_runs = [&shell](const std::string& history, const std::function<void()>& sent) {
    ShowRuns(
        shell, [&history](KeptRunsForm& runs) { runs.ChooseReport(history); }, sent);
  };
  form.exec();
  if (!form.cleared().isEmpty()) shell.Say(form.cleared());
}

}  // namespace quillcast::desktop

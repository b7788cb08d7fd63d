// The commands for message files.
#include <QLineEdit>

#include "desktop/document/body_view.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/mail_file/extra_form1.h"
#include "desktop/mail_file/extra_form2.h"
#include "desktop/mail_file/extra_form4.h"
#include "desktop/mail_file/message_form.h"
#include "desktop/run/extra_form3.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/practice_form.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

namespace {

// The other fields stay; what was there, with all its fields, is what the notice offers.
Result<bool> TakeImported(Shell& shell, const mail_file::ImportedBody& body) {
  auto taken = shell.document.Import(body.html, body.folder);
  if (!taken) return taken;
  shell.from_link.reset();
  shell.header.SetSubject(ToQt(body.subject));
  shell.header.SetFormat(document::Format::kText);
  shell.header.SetFormat(document::Format::kHtml);
  shell.document.KeepForACrash();  // leaving it will tell
  shell.AskAboutPictures();
  shell.notices.Refresh();
  shell.imported = shell.AsDraft();
  return taken;
}

void ImportMessageFrom(Shell& shell, const std::filesystem::path& file, QWidget* parent) {
  const auto take = [&shell](const mail_file::ImportedBody& body) { return TakeImported(shell, body); };
  ExtraForm2(shell.program, file, take, parent).exec();
}

MessageTools ToolsOf(Shell& shell) {
  MessageTools tools;
  tools.extract = [&shell](const std::filesystem::path& chosen, QWidget* parent) {
    ExtraForm4 form(shell.program, parent);
    form.findChild<QLineEdit*>("FilePathTextBox")->setText(PathToQt(chosen));
    form.exec();
  };
  tools.take_over = [&shell](const std::filesystem::path& chosen, QWidget* parent) {
    ImportMessageFrom(shell, chosen, parent);
  };
  tools.print = [&shell](const std::filesystem::path& chosen, QWidget* parent) {
    ExtraForm1(shell.program, chosen, parent).exec();
  };
  return tools;
}

}  // namespace

void PrintMessageFiles(Shell& shell) { ExtraForm1(shell.program, {}, &shell.window).exec(); }

void ImportMessage(Shell& shell) {
  ImportMessageFrom(shell, {}, &shell.window);
  shell.body.setFocus();
}

void ShowMessageFile(Shell& shell, const std::filesystem::path& file) {
  MessageForm(shell.program.settings, file, ToolsOf(shell), &shell.window).exec();
}

void ShowPracticeMailbox(Shell& shell) {
  PracticeForm(shell.program.settings, shell.practice.practice().folder(), ToolsOf(shell), &shell.window).exec();
}

void ExportMessage(Shell& shell) {
  auto message = shell.Message();
  if (!message) return shell.Tell(message.error());
  ExtraForm3(shell.program, *std::move(message), &shell.window).exec();
  shell.body.setFocus();
}

}  // namespace quillcast::desktop

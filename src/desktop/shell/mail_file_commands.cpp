// The commands of the Tools menu that are about message files.
#include "desktop/document/body_view.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/mail_file/extra_form2.h"
#include "desktop/run/extra_form3.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

namespace {

// The other fields stay; what was there, with all its fields, is what the notice offers.
Result<void> TakeImported(Shell& shell, const mail_file::ImportedBody& body) {
  shell.body.LeaveSource();
  auto taken = shell.document.Import(body.html, body.folder);
  if (!taken) return taken;
  shell.from_link.reset();
  shell.header.SetSubject(ToQt(body.subject));
  shell.header.SetFormat(document::Format::kText);
  shell.header.SetFormat(document::Format::kHtml);
  IgnoreErrors(shell.document.KeepFields());  // for a crash; leaving it will tell
  shell.AskAboutPictures();
  shell.notices.Refresh();
  return {};
}

}  // namespace

void ImportMessage(Shell& shell) {
  ExtraForm2(
      shell.program, [&shell](const mail_file::ImportedBody& body) { return TakeImported(shell, body); }, &shell.window)
      .exec();
  shell.editor.setFocus();
}

void ExportMessage(Shell& shell) {
  ExtraForm3(shell.program, shell.Message(), &shell.window).exec();
  shell.editor.setFocus();
}

}  // namespace quillcast::desktop

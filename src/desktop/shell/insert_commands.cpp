// The commands of the Insert menu.
#include "desktop/document/ask_for.h"
#include "desktop/document/body_view.h"
#include "desktop/document/date_time_form.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/line_form.h"
#include "desktop/document/table_form.h"
#include "desktop/document/template_form.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

void AddAttachments(Shell& shell) { shell.header.AddAttachments(); }

void DeleteAttachment(Shell& shell) { shell.header.DeleteAttachment(); }

void InsertTag(Shell& shell, const document::MergeField& field) {
  if (!shell.body.LeaveSource()) return;
  shell.editor.InsertHtml(ToQt(field.tag));
  shell.body.setFocus();
}

void InsertPicture(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  AskForPicture(shell.editor, shell.program.prompts, shell.program.folders.Pictures(), {}, &shell.window);
}

void OfferPictures(Shell& shell, const QStringList& files) {
  if (!shell.body.LeaveSource()) return;
  const auto folder = shell.program.folders.Pictures();
  for (const QString& file : files)
    AskForPicture(shell.editor, shell.program.prompts, folder, PathFromQt(file), &shell.window);
}

void InsertHyperlink(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  AskForLink(shell.editor, &shell.window);
}

void InsertTable(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  TableForm form(shell.program.prompts, &shell.window);
  if (form.exec() == QDialog::Accepted) shell.editor.InsertTable(ToQt(document::TableHtml(form.Choice())));
  shell.body.setFocus();
}

void InsertLine(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  LineForm form(shell.program.prompts, &shell.window);
  if (form.exec() == QDialog::Accepted) shell.editor.InsertHtml(ToQt(document::LineHtml(form.Choice())));
  shell.body.setFocus();
}

void InsertDateTime(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  DateTimeForm(shell.program.prompts, shell.program.clock, shell.editor, &shell.window).exec();
  shell.body.setFocus();
}

void BeginFromTemplate(Shell& shell) {
  if (TemplateForm(shell.program, shell.document, shell.editor, &shell.window).exec() == QDialog::Accepted) {
    shell.AskAboutPictures();
    shell.notices.Refresh();
  }
  shell.body.setFocus();
}

}  // namespace quillcast::desktop

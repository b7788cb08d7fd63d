// The commands of the File menu.
#include <QPrintDialog>
#include <QPrinter>
#include <memory>
#include <utility>

#include "account/account_settings.h"
#include "desktop/document/body_view.h"
#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/properties_form.h"
#include "desktop/shell/commands.h"
#include "desktop/shell/message_header.h"
#include "desktop/shell/notices.h"
#include "desktop/shell/shell.h"
#include "desktop/widgets/qt_text.h"
#include "document/edited_document.h"
#include "document/mailto.h"
#include "document/recent_documents.h"
#include "profile/main_window_contents.h"

namespace quillcast::desktop {
namespace {

constexpr const char* kPrintQuestion =
    "Please consider your environmental responsibility before printing.\r\nDo you still want to print this document?";

// Into a file the engine writes real text; on paper it prints a picture of the page.
void Print(Shell& shell, const std::shared_ptr<QPrinter>& printer) {
  const QString file = printer->outputFileName();
  if (!file.isEmpty()) {
    shell.Say(shell.editor.PrintToPdf(file) ? Shell::tr("Printed to %1.").arg(file)
                                            : Shell::tr("%1 could not be written. Choose another place.").arg(file));
    return;
  }
  shell.editor.Print(printer.get(), [&shell, printer](bool good) {
    shell.Say(good ? Shell::tr("The message is with the printer.")
                   : Shell::tr("The printer did not take the message."));
  });
}

void StartOver(Shell& shell) {
  shell.from_link.reset();
  shell.header.Clear();
  StartDocument(shell);
  shell.notices.Refresh();
}

bool ShowFile(Shell& shell, const std::filesystem::path& file) {
  const auto opened = shell.document.Open(file);
  shell.Tell(opened);
  shell.AskAboutPictures();
  shell.notices.Refresh();
  return static_cast<bool>(opened);
}

// What stands as a link made it is nobody's work: the next link takes its place without a question and a draft.
bool IsAsItsLinkMadeIt(Shell& shell) { return shell.from_link && shell.from_link == shell.AsDraft(); }

}  // namespace

bool BeginMessage(Shell& shell) {
  if (!shell.MayLeaveDocument()) return false;
  const auto aside = shell.document.SetAside();
  if (!aside) {
    shell.Tell(aside);
    return false;
  }
  StartOver(shell);
  return true;
}

void StartDocument(Shell& shell) {
  const auto contents = profile::LoadMainWindow(shell.program.settings, {});
  shell.Tell(shell.document.StartNew(contents ? contents->signature_html.value_or("") : ""));
  shell.AskAboutPictures();
}

void NewMessage(Shell& shell) { BeginMessage(shell); }

// What is there becomes a draft in its turn, so an import that nobody has written on goes without a question.
void RestoreDraft(Shell& shell) {
  const bool is_as_imported = shell.imported && shell.imported == shell.AsDraft();
  if (!is_as_imported && !shell.MayLeaveDocument()) return;
  shell.imported.reset();
  const auto draft = shell.document.Recover();
  shell.from_link.reset();
  if (draft) {
    shell.header.Show(*draft);
    shell.AskAboutPictures();
  } else {
    shell.Tell(draft.error());
  }
  shell.notices.Refresh();
  shell.body.setFocus();
}

void OpenDocument(Shell& shell) {
  const auto file = document::PickDocumentToOpen(shell.document, shell.program.prompts);
  if (!file) shell.Tell(file.error());
  if (file && document::IsNamedAsMessageFile(*file)) {
    ShowMessageFile(shell, *file);
  } else if (file && !file->empty()) {
    ShowFile(shell, *file);
  }
  shell.body.setFocus();
}

bool OpenFile(Shell& shell, const std::filesystem::path& file) {
  if (document::IsNamedAsMessageFile(file)) {
    ShowMessageFile(shell, file);
    return true;
  }
  if (!shell.MayLeaveDocument()) return false;
  const bool is_shown = ShowFile(shell, file);
  shell.body.setFocus();
  return is_shown;
}

void OpenRecent(Shell& shell, const std::filesystem::path& file) {
  if (std::filesystem::is_regular_file(file, IgnoreErrors())) {
    OpenFile(shell, file);
    return;
  }
  shell.Say(Shell::tr("%1 is no longer there. It was taken off the list.").arg(PathToQt(file)));
  const auto forgotten = document::ForgetRecentDocument(shell.program.settings, file);
  if (!forgotten) shell.Tell(forgotten);
}

bool BeginFromLink(Shell& shell, std::string_view address) {
  const auto wanted = document::ReadMailto(address);
  if (!wanted) {
    shell.Say(Shell::tr("The link asks for nothing that can be read as a message."));
    return false;
  }
  if (IsAsItsLinkMadeIt(shell)) {
    StartOver(shell);
  } else if (!BeginMessage(shell)) {
    return false;
  }
  shell.header.SetSubject(ToQt(wanted->subject));
  if (!wanted->body.empty())
    shell.editor.InsertHtml("<p>" + ToQt(document::HtmlFromText(wanted->body)) + "</p><p><br></p>");
  shell.from_link = shell.AsDraft();
  shell.body.setFocus();
  if (wanted->left_out.empty()) return true;
  QStringList left_out;
  for (const auto& what : wanted->left_out) left_out << ToQt(what);
  shell.Say(Shell::tr("A message goes to the group that is chosen above it. Left out of the link: %1.")
                .arg(left_out.join(", ")));
  return true;
}

void SaveDocument(Shell& shell) {
  shell.Tell(document::SaveDocument(shell.document, shell.program.folders.PreviewBody(), shell.program.prompts));
  shell.AskAboutPictures();
}

void SaveDocumentAs(Shell& shell) {
  const auto saved = document::SaveAs(shell.document, shell.program.prompts);
  if (!saved) shell.Tell(saved.error());
  shell.AskAboutPictures();
}

void PrintMessage(Shell& shell) {
  if (!shell.body.LeaveSource()) return;
  if (shell.program.prompts.Ask(kPrintQuestion) != platform::Answer::kYes) return;
  auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
  printer->setOutputFileName(PathToQt(shell.program.folders.temporary / "message.pdf"));
  QPrintDialog dialog(printer.get(), &shell.window);
  dialog.setWindowTitle(Shell::tr("Print"));
  if (dialog.exec() == QDialog::Accepted) Print(shell, printer);
}

void ShowProperties(Shell& shell) {
  auto message = shell.MessageAsItStands();
  if (!message) return shell.Tell(message.error());
  const auto account = account::AccountSettings::Load(shell.program.settings);
  const bool has_text_part = !account || account->IsOn(account::AccountKey::kTextPart);
  PropertiesForm(*std::move(message), shell.document.FileName(), has_text_part, &shell.window).exec();
  shell.body.setFocus();
}

void CloseWindow(Shell& shell) { shell.window.close(); }

}  // namespace quillcast::desktop

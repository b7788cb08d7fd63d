// What the commands of the main window do, by the file that has them.
#pragma once

#include <QStringList>
#include <cstddef>
#include <filesystem>
#include <string_view>

#include "desktop/document/editor_command.h"
#include "desktop/shell/command_table.h"
#include "document/merge_fields.h"
#include "run/journal/run_journal.h"

namespace quillcast::desktop {

// file_commands.cpp
void NewMessage(Shell& shell);
void OpenDocument(Shell& shell);
void SaveDocument(Shell& shell);
void SaveDocumentAs(Shell& shell);
void PrintMessage(Shell& shell);
void ShowProperties(Shell& shell);
void CloseWindow(Shell& shell);
// An empty body, or the signature where it is wanted; the fields above it stay.
void StartDocument(Shell& shell);
// Takes up the draft that a notice offers.
void RestoreDraft(Shell& shell);
// The same as NewMessage; false when the one that is there stays.
bool BeginMessage(Shell& shell);
// What the program was started with: a file as OpenDocument opens one, and a "mailto:" address, which begins a message.
// False when it did not come to that; the person was told why.
bool OpenFile(Shell& shell, const std::filesystem::path& file);
bool BeginFromLink(Shell& shell, std::string_view address);

// From the list of those that were open last; one that is gone is taken off it.
void OpenRecent(Shell& shell, const std::filesystem::path& file);

// message_file_commands.cpp
void ShowMessageFile(Shell& shell, const std::filesystem::path& file);

// edit_commands.cpp: those of the Edit menu work in the text box that has the focus, else in the editor.
void RunEditing(Shell& shell, EditorCommand command);
void PastePlain(Shell& shell);
void SwitchSource(Shell& shell);
template <EditorCommand command>
void Edit(Shell& shell) {
  RunEditing(shell, command);
}

// zoom_commands.cpp: how large the document is shown. Kept from one start to the next.
void ZoomIn(Shell& shell);
void ZoomOut(Shell& shell);
void ZoomReset(Shell& shell);
void RestoreZoom(Shell& shell);

// insert_commands.cpp
void AddAttachments(Shell& shell);
void DeleteAttachment(Shell& shell);
// Changes the picture that is selected; else asks for one.
void InsertPicture(Shell& shell);
// What was dropped or pasted is asked about: see HtmlEditor::InsertPictures.
void OfferPictures(Shell& shell, const QStringList& files);
void InsertHyperlink(Shell& shell);
void InsertTable(Shell& shell);
void InsertLine(Shell& shell);
void InsertDateTime(Shell& shell);
// In place of the body; the fields above it stay.
void BeginFromTemplate(Shell& shell);
void InsertTag(Shell& shell, const document::MergeField& field);
template <std::size_t field>
void InsertTagOf(Shell& shell) {
  InsertTag(shell, document::kMergeFields[field]);
}

// format_commands.cpp
void ChooseFont(Shell& shell);
void ChooseColour(Shell& shell);
void ChooseBodyColours(Shell& shell);
void ChangeTable(Shell& shell, TableEdit edit);
template <TableEdit edit>
void ChangeTableBy(Shell& shell) {
  ChangeTable(shell, edit);
}

// message_commands.cpp
void PreviewAsMail(Shell& shell);  // in the mail program
void PreviewInside(Shell& shell);
void Send(Shell& shell);
void ShowHistory(Shell& shell);
// Those that are kept, to go on with; also from the history and the notice.
// Opens with the mailing of this run chosen.
void ShowKeptRuns(Shell& shell, run::RunId run);

// tools_commands.cpp
void EditAccount(Shell& shell);
// The same over another window, at the account's page of the pace.
void EditPace(Shell& shell, QWidget* over);
void ShowGroups(Shell& shell);
void ImportRecipients(Shell& shell);
void ExtractFromMessages(Shell& shell);
void ExportRecipients(Shell& shell);
void EditSignature(Shell& shell);
void ShowThreads(Shell& shell);
void SwitchSplash(Shell& shell);
void ShowDomainTools(Shell& shell);
void TestServer(Shell& shell);

// message_file_commands.cpp
void PrintMessageFiles(Shell& shell);
void ImportMessage(Shell& shell);
void ExportMessage(Shell& shell);
void ShowPracticeMailbox(Shell& shell);

// help_commands.cpp
void ShowHelp(Shell& shell);
void ShowTutorial(Shell& shell);
void ShowTips(Shell& shell);
void AskForSupport(Shell& shell);
void CheckForUpdates(Shell& shell);
void OpenHomePage(Shell& shell);  // in the browser
void ShowAbout(Shell& shell);

}  // namespace quillcast::desktop

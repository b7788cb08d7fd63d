// The main window: the message that is being composed, and every command of the command bar.
#pragma once

#include <QMainWindow>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "desktop/shell/command_bar.h"
#include "desktop/shell/command_table.h"
#include "document/message_document.h"
#include "profile/program.h"

class QLabel;
class QPlainTextEdit;
class QStackedWidget;
class QTimer;

namespace quillcast::desktop {
class EditorDocument;
class FindBar;
class HtmlEditor;
}  // namespace quillcast::desktop

namespace quillcast::desktop {
class PicturesPanel;
}

namespace quillcast::desktop {

class GroupsMenu;
class MessageHeader;
class NoticeBar;
class PracticeMailbox;

class MainForm final : public QMainWindow {
  Q_OBJECT
 public:
  explicit MainForm(const profile::Program& program);
  ~MainForm() override;

  // Fills the lists, finds the place on the screen, and starts the editor with the first document.
  void Load();
  // The same in its two steps: the second, which starts the editor's engine, takes a third of a second.
  void LoadLists();
  void LoadDocument();
  // The one way of every menu entry and toolbar button. What is no identifier of the table does nothing.
  void Dispatch(int identifier);
  // A sentence for the status bar; it stands there for a quarter of a minute.
  void Say(const QString& sentence);
  // The tips window, where it is wanted at the start.
  void ShowTipsAtStart();
  // Comes to the front and flashes for a second: another start of the program asked for it.
  void Flash();

  // The session may end at any moment: what is not saved is kept aside for the next start.
  void KeepAside();
  // The system ends the program: nothing is asked, and a run that goes on is ended by its last step.
  void EndAtOnce();

  // The program closes itself for a shutdown after sending: nothing is asked.
  bool skip_save_prompt = false;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void BuildWindow();
  void ConnectParts();
  void MakeStatusBar();
  void RestorePlace();
  void KeepPlace();
  void Tell(const Result<void>& result);

  void StartNew();
  void NewMessage();
  void RestoreDraft();
  bool KeepDraft();
  bool MayLeaveDocument();
  bool MayStopImport();
  document::MessageDocument Document();
  void RunOwn(OwnCommand command);
  void RunEditor(int code);
  void InsertMergeField(std::string_view control);
  void Open();
  void Save();
  void Print();
  void ChooseFont();
  void ChooseColour();
  void InsertPicture();
  void InsertHyperlink();
  void InsertTable();
  void ShowSource(bool shown);
  QString SourceText() const;
  bool SourceWasEdited() const;
  void LeaveSource();
  void PreviewInMailProgram();
  void PreviewInside();
  void Send();
  void EditAccount();
  void ShowHistory();
  void ShowGroups();
  void ImportRecipients();
  void ExportRecipients();
  void AskForSupport();
  void ShowTips(bool on_request);
  void ShowHelp();
  void FocusOn(const QString& control);

  void AskAboutPictures();
  void TakePictureAnswers(const document::PicturePlaces& places);
  void ShowNotices();
  void BeginPractice();
  void ShowSender();
  void ShowPractice();

  const profile::Program& program_;
  CommandBar* bar_;
  MessageHeader* header_;
  NoticeBar* notice_;
  QStackedWidget* body_;
  HtmlEditor* editor_;
  QPlainTextEdit* source_;
  QString source_before_;
  bool source_has_crlf_ = false;
  bool stops_import_ = false;
  std::optional<std::uint64_t> lost_after_;  // so many times kept, the person was told that it cannot be kept now
  QTimer* source_pause_;                     // after the last change there
  QTimer* fields_pause_;                     // after the last change of what stands above the body
  FindBar* find_bar_;
  std::unique_ptr<EditorDocument> document_;
  GroupsMenu* groups_;
  PracticeMailbox* practice_;
  PicturesPanel* pictures_;  // in the notice's place while it asks
  qint64 arrived_ = 0;       // in the practice mailbox, those of earlier sessions too
  QTimer* arrivals_;         // tells of them a few times a second
  QLabel* first_panel_;
};

}  // namespace quillcast::desktop

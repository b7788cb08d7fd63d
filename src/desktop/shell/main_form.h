// The main window: the message that is being composed, built of its parts, which it wires to each other and to the
// commands.
#pragma once

#include <QMainWindow>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desktop/shell/command_table.h"
#include "profile/program.h"

class QTimer;

namespace quillcast::desktop {

class BodyView;
class CommandBar;
class DocumentLabel;
class EditorDocument;
class FindBar;
class HtmlEditor;
class MessageHeader;
class Notices;
class OpenRequests;
class PracticeMailbox;
class StatusPanel;

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
  // The one way of every menu entry, button and key.
  void Dispatch(CommandId id);
  // The same by a number of the command table. What is none does nothing.
  void Dispatch(int number);
  // A sentence for the status bar; it stands there for a quarter of a minute.
  void Say(const QString& sentence);
  // The tips window, where it is wanted at the start and no other is open or waits: one at a time. It waits for the
  // first document.
  void ShowTipsAtStart();
  // Comes to the front and flashes for a second: another start of the program asked for it.
  void Flash();
  // What a start of the program was given: see OpenRequests. At once, or when the window is free.
  void Open(const std::vector<std::string>& arguments);

  // The session may end at any moment: what is not saved is kept aside for the next start.
  void KeepAside();
  // The system ends the program: nothing is asked, and a run that goes on is ended by its last step.
  void EndAtOnce();

  // The program closes itself for a shutdown after sending: nothing is asked.
  bool skip_save_prompt = false;

 signals:
  // It may be about to go, so nothing is to be handed to it until false comes, which it does where the window stays.
  void Closes(bool closes);

 protected:
  bool event(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void changeEvent(QEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void ShowWaitingTips();
  void BuildWindow();
  void ConnectBar();
  void ConnectBody();
  void ConnectDocument();
  void ConnectHeader();
  void ConnectNotices();
  void RestorePlace();
  void KeepPlace();
  bool KeepDraft();
  bool MayClose();
  bool IsFree() const;
  void AtWork(const std::function<void()>& work);

  const profile::Program& program_;
  CommandBar* bar_;
  MessageHeader* header_;
  HtmlEditor* editor_;
  BodyView* body_;
  FindBar* find_bar_;
  std::unique_ptr<EditorDocument> document_;
  PracticeMailbox* practice_;
  Notices* notices_;
  StatusPanel* status_;
  DocumentLabel* label_;
  std::unique_ptr<Shell> shell_;
  OpenRequests* requests_;
  bool is_loaded_ = false;                   // the first document is there
  bool tips_wait_ = false;                   // for it
  int at_work_ = 0;                          // on commands
  bool closes_ = false;                      // or is asking whether it may; stays so until it is shown again
  QTimer* fields_pause_;                     // after the last change of what stands above the body
  std::optional<std::uint64_t> lost_after_;  // so many times kept, the person was told that it cannot be kept now
};

}  // namespace quillcast::desktop

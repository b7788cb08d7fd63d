// What the commands of the main window work on: its parts, and what takes several of them.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <optional>

#include "document/drafts.h"
#include "platform/result.h"
#include "profile/program.h"

class QWidget;

namespace quillcast::desktop {

class BodyView;
class CommandBar;
class EditorDocument;
class HtmlEditor;
class MessageHeader;
class Notices;
class PracticeMailbox;
class StatusPanel;

struct Shell {
  Q_DECLARE_TR_FUNCTIONS(Shell)
 public:
  const profile::Program& program;
  QWidget& window;
  CommandBar& bar;
  Notices& notices;
  MessageHeader& header;
  BodyView& body;
  HtmlEditor& editor;
  EditorDocument& document;
  PracticeMailbox& practice;
  StatusPanel& status;
  bool& skip_save_prompt;  // the program closes itself for a shutdown after sending: nothing is asked
  std::optional<document::Draft> from_link = std::nullopt;  // what was begun from a link, as it was then
  std::optional<document::Draft> imported = std::nullopt;   // what came out of a message file, as it was then

  void Say(const QString& sentence);
  // A failure, in the status line and in the log.
  void Tell(const Result<void>& result);

  // The whole message as it stands there, whichever view shows it. Fails where the editor does not answer.
  Result<document::MessageDocument> MessageAsItStands();
  // The same as it is sent and saved: what is no file yet names its character set.
  Result<document::MessageDocument> Message();
  // The same with group and method; nothing where the editor does not answer.
  std::optional<document::Draft> AsDraft();
  // Asks about unsaved changes, and tells why they could not be saved.
  bool MayLeaveDocument();
  // What the document names outside its folder is neither shown nor sent until the person was asked.
  void AskAboutPictures();
  // The answers that were given in another window.
  void TakePictureAnswers(const document::PicturePlaces& places);
  // A control of the window by its name, or "Editor".
  void FocusOn(const QString& control);
  // Who sends, as the account has it now.
  void ShowSender();
};

}  // namespace quillcast::desktop

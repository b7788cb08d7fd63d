// The line of a window that says what happened, or why something did not.
#pragma once

#include <QLabel>

#include "desktop/widgets/note.h"
#include "platform/result.h"

namespace quillcast::desktop {

// Wraps, and makes the window higher where that has no room for all of its lines; what stands in it is never markup.
class StatusLine final : public QLabel {
  Q_OBJECT
 public:
  explicit StatusLine(QWidget* parent, const char* name = "StatusLine");

  void Say(const QString& sentence, NoteKind kind = NoteKind::kInformation);
  // What went wrong and the remedy.
  void Fail(const Error& error);
  // From then on it never gets lower than this many lines, nor than it once was: what is said often, in texts of
  // different lengths, moves nothing back and forth.
  void KeepRoom(int lines);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void TakeColour();
  void MakeRoom();

  NoteKind kind_ = NoteKind::kInformation;
  bool keeps_room_ = false;
};

}  // namespace quillcast::desktop

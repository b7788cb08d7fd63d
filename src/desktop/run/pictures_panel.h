// Asks about pictures that a message names outside the document's folder; hidden where there are none. Where they could
// not be looked at, it says why and offers another look: nothing is settled by a failure.
#pragma once

#include <filesystem>
#include <vector>

#include "desktop/widgets/note_panel.h"
#include "document/message_document.h"
#include "message/related_pictures.h"
#include "platform/result.h"
#include "profile/program.h"

class QPushButton;

namespace quillcast::desktop {
class BackgroundTask;
}

namespace quillcast::desktop {

class PicturesPanel final : public NotePanel {
  Q_OBJECT
 public:
  PicturesPanel(const profile::Program& program, QWidget* parent);

  // For a window in which the letters of its buttons stand for other things.
  void DropLetters();
  // Looks beside the window, then emits Known.
  void LookAt(document::MessageDocument document);
  // Whether nothing is left to be asked; false until that is known.
  bool is_settled() const { return settled_; }
  // Whether it stands there with something to be answered.
  bool asks() const { return !isHidden(); }

 signals:
  void Known(bool settled);
  // The person answered for these files. The panel looks again by itself.
  void Answered(const std::vector<std::filesystem::path>& files, bool take);

 private:
  void Show(const Result<message::RelatedPictures>& pictures);
  void Answer(bool take);

  const profile::Program& program_;
  BackgroundTask* task_;
  document::MessageDocument document_;
  std::vector<std::filesystem::path> asked_;
  bool settled_ = false;
  QPushButton* leave_;
  QPushButton* take_;
  QPushButton* again_;
};

}  // namespace quillcast::desktop

// The strip above the message: one notice at a time, with what it offers.
#pragma once

#include <vector>

#include "desktop/widgets/note_panel.h"

namespace quillcast::desktop {

class NoticeBar final : public NotePanel {
  Q_OBJECT
 public:
  explicit NoticeBar(QWidget* parent);

  struct Offer {
    QString text;
    const char* name;  // of the button
    std::function<void()> action;
  };
  void Show(const QString& sentence, const std::vector<Offer>& offers);

 private:
  std::vector<QWidget*> buttons_;
};

}  // namespace quillcast::desktop

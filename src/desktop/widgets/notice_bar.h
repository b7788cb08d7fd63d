// The strip above the message: one notice at a time, with what it offers.
#pragma once

#include <QPointer>
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
  // What an offer does is taken for the same where its text is.
  void Show(const QString& sentence, const std::vector<Offer>& offers);
  void setVisible(bool visible) override;

 private:
  bool HasKeyboard() const;
  void GiveKeyboardBack();
  bool Shows(const QString& sentence, const std::vector<Offer>& offers) const;

  std::vector<QPushButton*> buttons_;
  QPointer<QWidget> before_;  // what had the keyboard before one of them
};

}  // namespace quillcast::desktop

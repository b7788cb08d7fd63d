// A strip in a window that says something and offers what can be done about it, without stopping anybody.
#pragma once

#include <QFrame>
#include <functional>

#include "desktop/widgets/note.h"

class QBoxLayout;
class QLabel;
class QPushButton;

namespace quillcast::desktop {

// The offers' buttons, beside the sentence or below it on the left.
enum class OfferPlace { kBeside, kBelow };

class NotePanel : public QFrame {
  Q_OBJECT
 public:
  // `label` names the sentence.
  NotePanel(NoteKind kind, const char* name, const char* label, QWidget* parent,
            OfferPlace place = OfferPlace::kBeside);

  void SetText(const QString& sentence);
  QString text() const;
  // Behind those that are there. Enter, pressed for the window's own button, never presses it.
  QPushButton* AddOffer(const char* name, const QString& text, std::function<void()> action);

 protected:
  void changeEvent(QEvent* event) override;
  QLabel* sentence() { return sentence_; }

 private:
  void TakeColours();

  NoteKind kind_;
  QLabel* sentence_;
  QLabel* sign_;
  QBoxLayout* offers_;
};

}  // namespace quillcast::desktop

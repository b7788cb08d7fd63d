// The dialog in which a link is asked for: where it leads, and the text that it stands on.
#pragma once

#include <QDialog>

class QLineEdit;

namespace quillcast::desktop {

// Changes nothing: after OK the caller takes the address and the text.
class LinkForm final : public QDialog {
  Q_OBJECT
 public:
  // With the address of the link that the caret is in, empty for none, and its text, or the selected text.
  LinkForm(const QString& address, const QString& text, QWidget* parent);

  // See LinkAddress.
  QString Address() const;
  // Empty where the text was left as it is: what is selected keeps its pictures and its formatting.
  QString Text() const;

 private:
  QLineEdit* address_;
  QLineEdit* text_;
};

}  // namespace quillcast::desktop

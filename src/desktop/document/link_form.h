// The dialog in which a link is asked for: what it leads to, and the text that it stands on.
#pragma once

#include <QDialog>
#include <vector>

#include "document/link_choice.h"

class QComboBox;
class QLineEdit;

namespace quillcast::desktop {

class StatusLine;
struct LinkPlace;

// Changes nothing: after OK the caller takes the address and the text, or takes the link away.
class LinkForm final : public QDialog {
  Q_OBJECT
 public:
  // With the address of the link that the caret is in, empty for none, and its text, or the selected text. `places` are
  // those in the message that it may lead to.
  LinkForm(const QString& address, const QString& text, const std::vector<LinkPlace>& places, QWidget* parent);

  // See document::LinkTarget.
  QString Address() const;
  // Empty where the text was left as it is: what is selected keeps its pictures and its formatting.
  QString Text() const;
  // What a link stands on where there was nothing: the mail address, or what the place says; empty for a web address.
  QString OwnText() const;
  // The link that was there is to go; its text stays.
  bool removes() const { return removes_; }

 public slots:
  // Closes it only when document::CheckLink has nothing against the choice.
  void accept() override;

 private:
  void MakeWindow(bool is_link, const std::vector<LinkPlace>& places);
  void Show(const document::LinkChoice& choice);
  void ShowKind();
  void SayWhere();
  document::LinkChoice Choice() const;

  QComboBox* kind_;
  QLineEdit* address_;
  QLineEdit* subject_;
  QComboBox* place_;
  QLineEdit* text_;
  StatusLine* status_ = nullptr;
  bool removes_ = false;
};

}  // namespace quillcast::desktop

// The subject, with a menu of merge tags of its own.
#pragma once

#include <QWidget>

class QLineEdit;
class QMenu;
class QToolButton;

namespace quillcast::desktop {

class SubjectField final : public QWidget {
  Q_OBJECT
 public:
  explicit SubjectField(QWidget* parent);

  QLineEdit* box() const { return box_; }

 private:
  // The commands of the menu bar put their tags into the body, wherever the caret is; these put them into the subject.
  QMenu* MakeTagMenu();
  void ShowMenu(const QPoint& at);

  QLineEdit* box_;
  QMenu* tags_;
  QToolButton* button_;
};

}  // namespace quillcast::desktop

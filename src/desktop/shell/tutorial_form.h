// The first mailing, page by page, beside the main window: the person does each step there, or has it done.
#pragma once

#include <QDialog>

#include "help/tutorial.h"

class QLabel;
class QPushButton;

namespace quillcast::desktop {

struct Shell;
class StatusLine;

// Never modal: what is told is done in the main window.
class TutorialForm final : public QDialog {
  Q_OBJECT
 public:
  explicit TutorialForm(Shell& shell);

 protected:
  bool event(QEvent* event) override;

 private:
  void BuildWindow();
  void ShowPage(std::size_t page);
  void Act();
  void Refresh();
  const help::TutorialPage& Page() const { return help::kTutorialPages.at(page_); }

  Shell& shell_;
  std::size_t page_ = 0;
  bool steps_aside_ = false;  // it is hidden while a dialog is open
  QLabel* title_;
  QLabel* text_;
  StatusLine* status_;
  QPushButton* act_;
  QPushButton* back_;
  QPushButton* next_;
};

}  // namespace quillcast::desktop

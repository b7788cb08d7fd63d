#include "desktop/shell/tutorial_form.h"

#include <QEvent>
#include <QLabel>
#include <QPushButton>

#include "desktop/shell/shell.h"
#include "desktop/shell/tutorial_steps.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {

TutorialForm::TutorialForm(Shell& shell)
    : QDialog(&shell.window),
      shell_(shell),
      title_(new QLabel(this)),
      text_(new QLabel(this)),
      status_(new StatusLine(this)),
      act_(new QPushButton(this)),
      back_(new QPushButton(tr("&Back"), this)),
      next_(new QPushButton(tr("&Next"), this)) {
  BuildWindow();
  connect(act_, &QPushButton::clicked, this, &TutorialForm::Act);
  connect(back_, &QPushButton::clicked, this, [this] { ShowPage(page_ - 1); });
  connect(next_, &QPushButton::clicked, this, [this] { ShowPage(page_ + 1); });
  ShowPage(0);
  next_->setFocus();
}

void TutorialForm::BuildWindow() {
  setObjectName("TutorialForm");
  setWindowTitle(tr("Tutorial"));
  setAttribute(Qt::WA_DeleteOnClose);
  setMinimumSize(520, 320);
  title_->setObjectName("TutorialTitle");
  QFont larger = title_->font();
  larger.setPointSize(larger.pointSize() + 3);
  larger.setBold(true);
  title_->setFont(larger);
  text_->setObjectName("TutorialText");
  text_->setWordWrap(true);
  text_->setTextFormat(Qt::PlainText);
  text_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  act_->setObjectName("DoItButton");
  back_->setObjectName("BackButton");
  next_->setObjectName("NextButton");
  auto* column = new FormColumn(this);
  column->Add(title_);
  column->Add(text_, 1);
  column->AddLine({act_, nullptr});
  column->Add(status_);
  auto* buttons = column->AddButtons(QDialogButtonBox::Close);
  for (QPushButton* button : {back_, next_}) {
    LetFollow(button);
    buttons->addButton(button, QDialogButtonBox::ActionRole);
  }
}

void TutorialForm::ShowPage(std::size_t page) {
  page_ = page;
  title_->setText(Translated(Page().title));
  text_->setText(Translated(Page().text));
  act_->setVisible(Page().action != nullptr);
  if (Page().action != nullptr) act_->setText(Translated(Page().action));
  back_->setEnabled(page > 0);
  next_->setEnabled(page + 1 < help::kTutorialPages.size());
  Refresh();
}

void TutorialForm::Act() {
  const auto done = DoStep(shell_, Page().step);
  Refresh();
  if (!done) status_->Fail(done.error());
  raise();
  activateWindow();  // the step may have opened a window, which leaves the keys to the letter
  act_->setFocus();
}

void TutorialForm::Refresh() { status_->Say(DoneText(shell_, Page().step)); }

// What was done in the main window meanwhile is seen on coming back. A dialog over that one, such as a run that may
// have to be stopped, is never covered: this one steps aside until it has closed.
bool TutorialForm::event(QEvent* event) {
  const bool is_known = QDialog::event(event);
  if (event->type() == QEvent::WindowActivate && status_->text().isEmpty()) Refresh();
  if (event->type() == QEvent::WindowBlocked && isVisible()) {
    steps_aside_ = true;
    hide();
  } else if (event->type() == QEvent::WindowUnblocked && steps_aside_) {
    steps_aside_ = false;
    show();
  }
  return is_known;
}

}  // namespace quillcast::desktop

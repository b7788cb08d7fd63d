#include "desktop/mail_file/message_file_field.h"

#include <QDropEvent>
#include <QLineEdit>
#include <QPushButton>

#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "mail_file/load_settings.h"

namespace quillcast::desktop {

MessageFileField::MessageFileField(platform::Prompts& prompts, std::string title, QWidget* dialog)
    : QObject(dialog),
      prompts_(prompts),
      title_(std::move(title)),
      box_(new QLineEdit(dialog)),
      button_(new QPushButton(tr("&Browse…"), dialog)) {
  button_->setObjectName("FilePathButton");
  dialog->setAcceptDrops(true);
  dialog->installEventFilter(this);
  connect(button_, &QPushButton::clicked, this, &MessageFileField::Choose);
}

void MessageFileField::AskOfChosen(std::function<bool(const std::filesystem::path& file)> may_be_taken) {
  may_be_taken_ = std::move(may_be_taken);
}

void MessageFileField::AddTo(FormGrid* grid) { grid->Add("FilePathTextBox", tr("&Message file:"), box_, {button_}); }

std::filesystem::path MessageFileField::path() const { return PathFromQt(box_->text()); }

void MessageFileField::SetEnabled(bool is_enabled) {
  box_->setEnabled(is_enabled);
  button_->setEnabled(is_enabled);
}

void MessageFileField::Choose() {
  const auto files = prompts_.PickOpenFile({.title = title_, .filter = std::string(mail_file::kMessageFileFilter)});
  if (files.empty() || (may_be_taken_ && !may_be_taken_(files.front()))) return;
  box_->setText(PathToQt(files.front()));
}

bool MessageFileField::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::DragEnter && event->type() != QEvent::Drop) return QObject::eventFilter(watched, event);
  auto* const dropped = static_cast<QDropEvent*>(event);  // which the entering is too
  const QStringList files = DroppedFiles(dropped->mimeData());
  if (files.isEmpty() || !box_->isEnabled()) return false;
  dropped->acceptProposedAction();
  if (event->type() == QEvent::Drop) box_->setText(files.front());
  return true;
}

}  // namespace quillcast::desktop

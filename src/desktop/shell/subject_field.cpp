#include "desktop/shell/subject_field.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>

#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "document/merge_fields.h"

namespace quillcast::desktop {

SubjectField::SubjectField(QWidget* parent)
    : QWidget(parent), box_(new QLineEdit(this)), tags_(MakeTagMenu()), button_(new QToolButton(this)) {
  box_->setPlaceholderText(tr("What the message is about; merge tags work here too"));
  button_->setObjectName("SubjectTagButton");
  button_->setIcon(Icon("merge"));
  button_->setStyleSheet("QToolButton::menu-indicator { image: none; }");  // the style's own lies over the icon
  button_->setPopupMode(QToolButton::InstantPopup);
  button_->setFocusPolicy(Qt::TabFocus);
  button_->setToolTip(tr("Put a merge tag into the subject"));
  button_->setAccessibleName(tr("Merge tag for the subject"));
  button_->setMenu(tags_);
  setFocusProxy(box_);
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(0, 0, 0, 0);
  line->addWidget(box_, 1);
  line->addWidget(button_);
  box_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(box_, &QWidget::customContextMenuRequested, this, &SubjectField::ShowMenu);
}

QMenu* SubjectField::MakeTagMenu() {
  auto* menu = new QMenu(tr("Merge Tag"), this);
  menu->setObjectName("SubjectTagMenu");
  menu->setToolTipsVisible(true);
  for (std::size_t i = 0; i < document::kMergeFields.size(); ++i) {
    const QString tag = ToQt(document::kMergeFields.at(i).tag);
    QAction* action = menu->addAction(Translated(recipients::kFields.at(i).label), this, [this, tag] {
      box_->insert(tag);
      box_->setFocus();
    });
    action->setToolTip(tag);
  }
  return menu;
}

void SubjectField::ShowMenu(const QPoint& at) {
  QMenu* menu = box_->createStandardContextMenu();
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addSeparator();
  menu->addMenu(tags_);
  menu->popup(box_->mapToGlobal(at));
}

}  // namespace quillcast::desktop

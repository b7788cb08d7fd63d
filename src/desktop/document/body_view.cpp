#include "desktop/document/body_view.h"

#include "desktop/document/html_editor.h"
#include "desktop/document/source_view.h"

namespace quillcast::desktop {

BodyView::BodyView(HtmlEditor* editor, QWidget* parent)
    : QStackedWidget(parent), editor_(editor), source_(new SourceView(this)) {
  addWidget(editor_);
  addWidget(source_);
  connect(source_, &SourceView::Paused, this, [this] {
    if (shows_source() && source_->IsChanged()) emit SourceChanged(source_->Html());
  });
}

bool BodyView::shows_source() const { return currentWidget() == source_; }

void BodyView::ShowSource() {
  source_->SetHtml(editor_->Html());
  setCurrentWidget(source_);
  source_->setFocus();
  emit SourceShown(true);
}

void BodyView::LeaveSource() {
  if (!shows_source()) return;
  if (source_->IsChanged()) {
    editor_->SetHtml(source_->Html(), editor_->base(), true);
    emit SourceTaken();
  }
  setCurrentWidget(editor_);
  editor_->setFocus();
  emit SourceShown(false);
}

}  // namespace quillcast::desktop

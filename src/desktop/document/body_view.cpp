#include "desktop/document/body_view.h"

#include "desktop/document/html_editor.h"
#include "desktop/document/source_view.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

BodyView::BodyView(HtmlEditor* editor, QWidget* parent)
    : QStackedWidget(parent), editor_(editor), source_(new SourceView(this)) {
  addWidget(editor_);
  addWidget(source_);
  setFocusProxy(editor_);
  connect(editor_, &HtmlEditor::Loaded, this, &BodyView::FollowEditor);
  connect(source_, &SourceView::Paused, this, [this] {
    if (shows_source() && source_->IsChanged()) emit SourceChanged(source_->Html());
  });
  connect(source_, &SourceView::modificationChanged, this, [this](bool changed) {
    if (changed) editor_->SetModified(true);
  });
}

bool BodyView::shows_source() const { return currentWidget() == source_; }

void BodyView::ShowSource() {
  source_->SetHtml(editor_->Html());
  setCurrentWidget(source_);
  setFocusProxy(source_);
  source_->setFocus();
  emit SourceShown(true);
}

// Where the source was left, the keys go to the editor.
void BodyView::ShowEditor() {
  setCurrentWidget(editor_);
  setFocusProxy(editor_);
  editor_->setFocus();
  emit SourceShown(false);
}

// Another document is there: in the view that can show it.
void BodyView::FollowEditor() {
  if (takes_) return;
  if (editor_->unshown()) {
    ShowSource();
    emit Trouble(InWords(*editor_->unshown()));
  } else if (shows_source()) {
    ShowEditor();
  }
}

void BodyView::BeginTyping() {
  if (!shows_source()) editor_->BeginTyping();
}

bool BodyView::LeaveSource() {
  if (!shows_source()) return true;
  if (source_->IsChanged()) {
    takes_ = true;
    editor_->SetHtml(source_->Html(), editor_->base(), true);
    takes_ = false;
    source_->SetTaken();
    emit SourceTaken();
  }
  if (editor_->unshown()) {
    emit Trouble(InWords(*editor_->unshown()));
    return false;
  }
  ShowEditor();
  return true;
}

}  // namespace quillcast::desktop

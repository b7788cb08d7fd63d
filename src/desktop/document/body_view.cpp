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
  connect(source_, &SourceView::textChanged, this, [this] {
    if (shows_source()) editor_->HolderChanged();
  });
}

bool BodyView::shows_source() const { return currentWidget() == source_; }

// The text is asked for first: what the page does not tell cannot be shown.
void BodyView::ShowSource() {
  const auto text = editor_->Text();
  if (!text) {
    emit Trouble(InWords(text.error()));
    return;
  }
  source_->SetHtml(*text);
  editor_->LendTo([this] { return source_->Html(); });
  setCurrentWidget(source_);
  setFocusProxy(source_);
  source_->setFocus();
  emit SourceShown(true);
}

// Where the source was left, the keys go to the editor.
void BodyView::ShowEditor() {
  editor_->LendTo({});
  setCurrentWidget(editor_);
  setFocusProxy(editor_);
  editor_->setFocus();
  emit SourceShown(false);
}

// Another document is there: in the view that can show it.
void BodyView::FollowEditor() {
  if (editor_->unshown()) {
    ShowSource();
    emit Trouble(InWords(*editor_->unshown()));
  } else if (shows_source()) {
    ShowEditor();
    emit Trouble({});  // what was said of the one before is no longer so
  }
}

void BodyView::BeginTyping() {
  if (!shows_source()) editor_->BeginTyping();
}

bool BodyView::LeaveSource() {
  if (!shows_source()) return true;
  const auto& unshown = editor_->unshown();
  if (source_->IsChanged() || (unshown && unshown->failure == Failure::kTryAgain)) {
    const bool is_shown = editor_->ShowHeld();
    source_->SetTaken();
    if (is_shown) emit SourceTaken();
  }
  if (unshown) {
    emit Trouble(InWords(*unshown));
    return false;
  }
  ShowEditor();
  return true;
}

}  // namespace quillcast::desktop

// What the editor knows of the text: whether it changed, what it is now, and what was seen of it.
#include <QElapsedTimer>
#include <QTimer>
#include <utility>

#include "desktop/document/editor_page.h"
#include "desktop/document/html_editor.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

bool HtmlEditor::IsModified() {
  if (text_.is_changed() || read_ || loading_ || unshown_ || !alive_) return text_.is_changed();
  const QVariant edits = Evaluate("quill.edits()");
  return text_.is_changed() || !edits.isValid() || edits.toInt() > noticed_;
}

void HtmlEditor::Saved() {
  text_.Save();
  TellModified();
}

void HtmlEditor::TellModified() {
  if (std::exchange(told_modified_, text_.is_changed()) != text_.is_changed()) emit ModifiedChanged(told_modified_);
}

// One that was on its way while the page was asked, or from the document before, is known.
void HtmlEditor::TakeNotice(int edits) {
  if (read_only_ || loading_ || unshown_ || read_ || edits <= noticed_) return;
  noticed_ = edits;
  state_pause_->start();
  NoteChange();
}

void HtmlEditor::NoteChange() {
  if (text_.Change()) look_pause_->start(TypedText::Pause(look_took_));
  TellModified();
}

// What the page is asked for beside the window must still be its business when the answer comes.
void HtmlEditor::Look() {
  QElapsedTimer clock;
  clock.start();
  const auto seen = [this, clock] {
    if (text_.is_changed()) emit Snapshot(text_.seen());
    look_took_ = clock.elapsed();
    if (text_.is_unseen()) look_pause_->start(TypedText::Pause(look_took_));
  };
  if (read_) text_.See(read_(), true);
  if (!text_.is_unseen()) {
    seen();
  } else if (alive_ && !loading_ && !unshown_) {
    page_->runJavaScript(SavingScript(), kWorld, [this, seen, load = loads_](const QVariant& value) {
      if (!value.isValid() || load != loads_ || loading_ || read_) return;
      See(value);
      seen();
    });
  }
}

// What asks the page for the document, and Assemble understands.
QString HtmlEditor::SavingScript() const { return cut_.has_body ? "quill.body()" : "quill.whole()"; }

QString HtmlEditor::Assemble(const QVariant& saved) const {
  const QVariantMap body = saved.toMap();
  if (!cut_.has_body) return ToQt(cut_.head) + body["html"].toString();
  QString tag = "<body";
  for (const QVariant& pair : body["attributes"].toList()) {
    tag += QString(" %1=\"%2\"").arg(pair.toList().at(0).toString(), pair.toList().at(1).toString().toHtmlEscaped());
  }
  return ToQt(cut_.head) + tag + '>' + body["inner"].toString() + ToQt(cut_.tail);
}

// An answer tells of edits whose notice is on its way; a notice may also be here before an older answer.
void HtmlEditor::See(const QVariant& saved) {
  const int edits = saved.toMap()["edits"].toInt();
  TakeNotice(edits);
  text_.See(Assemble(saved), edits == noticed_);
}

// A page that was given up is not coming back, so the text is what was seen of it.
Result<void> HtmlEditor::AskPage() {
  if (given_up_) return {};
  const QVariant edits = Evaluate("quill.edits()");
  if (edits.isValid() && edits.toInt() <= noticed_ && !text_.is_unseen()) return {};
  const QVariant saved = edits.isValid() ? Evaluate(SavingScript(), kLoadLimit) : QVariant();
  if (saved.isValid()) {
    See(saved);
    return {};
  }
  return Error{Failure::kTryAgain, "The editor does not answer, so what was typed last is not known.",
               "Nothing was saved or sent. Try it once more."};
}

Result<QString> HtmlEditor::Text() {
  if (waiting_) return waiting_->source;
  if (read_) {
    text_.See(read_(), true);
  } else if (!loading_ && !unshown_ && page_ != nullptr) {
    if (auto asked = AskPage(); !asked) return asked.error();
  }
  return text_.seen();
}

void HtmlEditor::LendTo(std::function<QString()> read) {
  if (read_ && text_.is_unseen()) {
    text_.See(read_(), true);
    emit Snapshot(text_.seen());
  }
  read_ = std::move(read);
}

}  // namespace quillcast::desktop

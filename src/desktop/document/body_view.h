// The body in its two views: the editor, or in its place the HTML source. The editor holds the document; what was
// changed in the source reaches it when the source is left. What the editor holds and cannot show stays in the source.
#pragma once

#include <QStackedWidget>

namespace quillcast::desktop {

class HtmlEditor;
class SourceView;

// The editor becomes its child. setFocus gives the keys to the view that is shown.
class BodyView final : public QStackedWidget {
  Q_OBJECT
 public:
  BodyView(HtmlEditor* editor, QWidget* parent);

  // True from ShowSource to LeaveSource; what is typed meanwhile is not in the editor, which counts as modified by it.
  bool shows_source() const;
  void ShowSource();
  // Gives the editor what was changed there, and the keys; nothing where the editor is shown. False where it cannot
  // show that: the source stays, Trouble tells why, and the document is what stands there.
  bool LeaveSource();
  // Once it is on the screen: see HtmlEditor.
  void BeginTyping();

 signals:
  // After the change of view; false when the editor is back.
  void SourceShown(bool shown);
  // A second after the last change in the source: the document as it will be.
  void SourceChanged(const QString& html);
  void SourceTaken();  // into the editor
  void Trouble(const QString& sentence);

 private:
  void ShowEditor();
  void FollowEditor();
  HtmlEditor* editor_;
  SourceView* source_;
  bool takes_ = false;  // the editor is being given what stands in the source
};

}  // namespace quillcast::desktop

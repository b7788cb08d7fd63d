// The body in its two views: the editor, or in its place the HTML source. Whichever is shown holds the text and takes
// the keys; HtmlEditor knows the text in either case. What the editor cannot show stays in the source.
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

  bool shows_source() const;
  void ShowSource();
  // For what works in the page: gives the editor what was changed in the source, and the keys; nothing where the editor
  // is shown. False where it cannot show that: the source stays, and Trouble tells why. What only reads the text leaves
  // the source where it is.
  bool LeaveSource();
  // Once it is on the screen: see HtmlEditor.
  void BeginTyping();

 signals:
  // After the change of view; false when the editor is back.
  void SourceShown(bool shown);
  void SourceTaken();  // into the editor
  void Trouble(const QString& sentence);

 private:
  void ShowEditor();
  void FollowEditor();
  HtmlEditor* editor_;
  SourceView* source_;
};

}  // namespace quillcast::desktop

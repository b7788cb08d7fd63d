// The body in its two views: the editor, or in its place the HTML source. The editor holds the document; what was
// changed in the source reaches it when the source is left.
#pragma once

#include <QStackedWidget>

namespace quillcast::desktop {

class HtmlEditor;
class SourceView;

class BodyView final : public QStackedWidget {
  Q_OBJECT
 public:
  BodyView(HtmlEditor* editor, QWidget* parent);

  bool shows_source() const;
  void ShowSource();
  // Gives the editor what was changed there, and the keys; nothing where the editor is shown.
  void LeaveSource();

 signals:
  void SourceShown(bool shown);
  // A second after the last change in the source: the document as it will be.
  void SourceChanged(const QString& html);
  void SourceTaken();  // into the editor

 private:
  HtmlEditor* editor_;
  SourceView* source_;
};

}  // namespace quillcast::desktop

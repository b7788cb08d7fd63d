// A small bar of formatting commands over an editor, for windows that are not the main one.
#pragma once

#include <QToolBar>
#include <functional>

namespace quillcast::desktop {

class HtmlEditor;

// Its marks follow the caret. Until the editor has a document the bar is to be disabled.
class EditorBar final : public QToolBar {
  Q_OBJECT
 public:
  EditorBar(HtmlEditor* editor, QWidget* parent);

  // Behind those that are there, under a line; for what asks the person something first.
  QAction* AddAsking(const char* icon, const QString& name, std::function<void()> ask);

 private:
  HtmlEditor* editor_;
};

}  // namespace quillcast::desktop

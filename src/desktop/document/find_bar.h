// The bar under the editor that finds text in it.
#pragma once

#include <QWidget>

class QLineEdit;

namespace quillcast::desktop {

class HtmlEditor;
class StatusLine;

// Hidden until Open. Enter or F3 goes on, with Shift back; Esc closes.
class FindBar final : public QWidget {
  Q_OBJECT
 public:
  FindBar(HtmlEditor* editor, QWidget* parent);

  // Shows the bar with `text` in its box.
  void Open(const QString& text);
  void Close();

 signals:
  void Closed();  // the keys are free

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Find(bool backward);

  HtmlEditor* editor_;
  QLineEdit* text_;
  StatusLine* result_;
};

}  // namespace quillcast::desktop

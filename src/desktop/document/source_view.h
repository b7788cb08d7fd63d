// The body as HTML source, to be typed into.
#pragma once

#include <QPlainTextEdit>

namespace quillcast::desktop {

// In a font of fixed width, its lines wrapped. Takes no files of this machine, neither dropped nor pasted. The box
// knows one line end; what comes out has those that went in.
class SourceView final : public QPlainTextEdit {
  Q_OBJECT
 public:
  explicit SourceView(QWidget* parent);

  // IsChanged begins here.
  void SetHtml(const QString& html);
  // With the line ends and the blanks that it was given.
  QString Html() const;
  void SetTaken();  // IsChanged begins anew
  // Since it was given, or taken.
  bool IsChanged() const { return Html() != before_; }

 protected:
  bool canInsertFromMimeData(const QMimeData* what) const override;
  void insertFromMimeData(const QMimeData* what) override;

 private:
  QString before_;
  bool has_crlf_ = false;
};

}  // namespace quillcast::desktop

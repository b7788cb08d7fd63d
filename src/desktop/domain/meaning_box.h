// What a connection test means, one sentence a line, in as much room as it needs and can get.
#pragma once

#include <QTextEdit>

#include "desktop/widgets/note.h"

namespace quillcast::desktop {

// Read only, never markup. As high as its lines while its layout has the room; else it scrolls, by keys too.
class MeaningBox final : public QTextEdit {
  Q_OBJECT
 public:
  explicit MeaningBox(QWidget* parent);

  // No lines hide it.
  void Show(const QStringList& lines, NoteKind kind);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void TakeColours();
  void FitBar();

  NoteKind kind_ = NoteKind::kInformation;
};

}  // namespace quillcast::desktop

// Shows the report of a run out of its file, however long it is; only the lines on screen are ever held.
#pragma once

#include <QAbstractScrollArea>
#include <filesystem>
#include <optional>

#include "run/report_lines.h"

namespace quillcast::desktop {

class EmptyState;

class ReportView final : public QAbstractScrollArea {
  Q_OBJECT
 public:
  explicit ReportView(QWidget* parent);

  // Failures show as an empty report; the run itself tells of them.
  void Open(const std::filesystem::path& file);
  // Takes in what was written since; stays at the end where the end was in view.
  void Update();
  std::size_t line_count() const { return lines_ ? lines_->size() : 0; }
  QString LineAt(std::size_t line) const;
  // The selected lines, or all of them up to a million when none is.
  void Copy() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  int LineHeight() const;
  int VisibleLines() const;
  void SetRange();
  std::ptrdiff_t LineUnder(const QPoint& position) const;
  std::ptrdiff_t LineAfter(int key) const;
  void MoveTo(std::ptrdiff_t line, bool extend);

  EmptyState* empty_;
  std::optional<run::ReportLines> lines_;
  std::ptrdiff_t anchor_ = -1;  // the selected lines, from here
  std::ptrdiff_t caret_ = -1;   // to here
};

}  // namespace quillcast::desktop

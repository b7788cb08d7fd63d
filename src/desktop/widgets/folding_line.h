// Widgets side by side where there is room for all of them, and else in as many lines as that takes, so that a window
// can be narrower than its longest row.
#pragma once

#include <QLayout>
#include <QList>
#include <vector>

namespace quillcast::desktop {

// Those whose policy is to expand, or at most to have their own width, share what is left of their line.
class FoldingLine final : public QLayout {
 public:
  // With so many pixels between its widgets, and no margins.
  FoldingLine(QWidget* parent, int gap);
  ~FoldingLine() override;
  FoldingLine(const FoldingLine&) = delete;
  FoldingLine& operator=(const FoldingLine&) = delete;

  void addItem(QLayoutItem* item) override;
  int count() const override;
  QLayoutItem* itemAt(int index) const override;
  QLayoutItem* takeAt(int index) override;
  Qt::Orientations expandingDirections() const override;
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  // All in one line.
  QSize sizeHint() const override;
  // As wide as each in a line of its own; as high as it is now, so that a window which has not that room scrolls.
  QSize minimumSize() const override;
  void setGeometry(const QRect& place) override;

 private:
  using Line = std::vector<QLayoutItem*>;
  std::vector<Line> LinesIn(int width) const;
  void Place(const Line& line, const QRect& place) const;

  QList<QLayoutItem*> items_;
  int height_ = 0;  // of the lines as they were laid out last
};

}  // namespace quillcast::desktop

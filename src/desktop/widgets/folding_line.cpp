#include "desktop/widgets/folding_line.h"

#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <utility>

namespace quillcast::desktop {
namespace {

constexpr int kBetweenLines = 6;  // pixels

bool Grows(const QLayoutItem* item) {
  const QWidget* widget = const_cast<QLayoutItem*>(item)->widget();
  if (widget == nullptr) return false;
  const QSizePolicy::Policy policy = widget->sizePolicy().horizontalPolicy();
  return policy == QSizePolicy::Maximum || (policy & QSizePolicy::ExpandFlag) != 0;
}

// What can grow begins at its smallest.
int WidthOf(const QLayoutItem* item) { return Grows(item) ? item->minimumSize().width() : item->sizeHint().width(); }

int HeightOf(const std::vector<QLayoutItem*>& line) {
  int height = 0;
  for (const QLayoutItem* item : line) height = std::max(height, item->sizeHint().height());
  return height;
}

}  // namespace

FoldingLine::FoldingLine(QWidget* parent, int gap) : QLayout(parent) {
  setContentsMargins(0, 0, 0, 0);
  setSpacing(gap);
}

FoldingLine::~FoldingLine() { qDeleteAll(items_); }

void FoldingLine::addItem(QLayoutItem* item) {
  items_.append(item);
  invalidate();
}

int FoldingLine::count() const { return static_cast<int>(items_.size()); }

QLayoutItem* FoldingLine::itemAt(int index) const { return items_.value(index); }

QLayoutItem* FoldingLine::takeAt(int index) {
  return index >= 0 && index < items_.size() ? items_.takeAt(index) : nullptr;
}

Qt::Orientations FoldingLine::expandingDirections() const {
  const bool grows = std::any_of(items_.begin(), items_.end(), Grows);
  return grows ? Qt::Horizontal : Qt::Orientations();
}

std::vector<FoldingLine::Line> FoldingLine::LinesIn(int width) const {
  std::vector<Line> lines;
  int taken = 0;
  for (QLayoutItem* item : items_) {
    if (item->isEmpty()) continue;
    const int wide = WidthOf(item);
    if (lines.empty() || taken + spacing() + wide > width) {
      lines.emplace_back();
      taken = wide;
    } else {
      taken += spacing() + wide;
    }
    lines.back().push_back(item);
  }
  return lines;
}

int FoldingLine::heightForWidth(int width) const {
  int height = 0;
  for (const Line& line : LinesIn(width)) height += HeightOf(line) + (height > 0 ? kBetweenLines : 0);
  return height;
}

QSize FoldingLine::sizeHint() const {
  QSize all(0, 0);
  for (const QLayoutItem* item : items_) {
    if (item->isEmpty()) continue;
    const QSize hint = item->sizeHint();
    all = QSize(all.width() + (all.width() == 0 ? 0 : spacing()) + hint.width(), std::max(all.height(), hint.height()));
  }
  return all;
}

QSize FoldingLine::minimumSize() const {
  QSize least(0, height_);
  for (const QLayoutItem* item : items_) {
    if (!item->isEmpty()) least = least.expandedTo(QSize(WidthOf(item), item->minimumSize().height()));
  }
  return least;
}

void FoldingLine::setGeometry(const QRect& place) {
  QLayout::setGeometry(place);
  int top = place.top();
  for (const Line& line : LinesIn(place.width())) {
    const int height = HeightOf(line);
    Place(line, QRect(place.left(), top, place.width(), height));
    top += height + kBetweenLines;
  }
  const int before = std::exchange(height_, heightForWidth(place.width()));
  if (before != height_) update();
}

// In the middle of the line's height.
void FoldingLine::Place(const Line& line, const QRect& place) const {
  int left_over = place.width() - spacing() * (static_cast<int>(line.size()) - 1);
  int growing = 0;
  for (const QLayoutItem* item : line) {
    left_over -= WidthOf(item);
    growing += Grows(item) ? 1 : 0;
  }
  int left = place.left();
  for (QLayoutItem* item : line) {
    int wide = WidthOf(item);
    if (Grows(item)) {
      const int share = std::min(std::max(left_over, 0) / growing--, item->maximumSize().width() - wide);
      left_over -= share;
      wide += share;
    }
    const int height = std::min(item->sizeHint().height(), place.height());
    const QRect own(left, place.top() + (place.height() - height) / 2, std::min(wide, place.width()), height);
    item->setGeometry(QStyle::visualRect(parentWidget()->layoutDirection(), place, own));
    left += wide + spacing();
  }
}

}  // namespace quillcast::desktop

#include "desktop/widgets/count_bar.h"

#include <QStyleOptionProgressBar>
#include <QStylePainter>
#include <algorithm>

#include "desktop/widgets/contrast.h"

namespace quillcast::desktop {
namespace {

constexpr int kSteps = 1000;

}  // namespace

CountBar::CountBar(const char* name, QWidget* parent) : QProgressBar(parent) {
  setObjectName(name);
  setRange(0, kSteps);
  setValue(0);
}

void CountBar::Count(std::uint64_t done, std::uint64_t total) {
  const double part = total == 0 ? 0 : static_cast<double>(done) / static_cast<double>(total);
  setValue(static_cast<int>(kSteps * std::min(part, 1.0)));
}

void CountBar::paintEvent(QPaintEvent*) {
  QStylePainter painter(this);
  QStyleOptionProgressBar option;
  initStyleOption(&option);
  option.textVisible = false;
  painter.drawControl(QStyle::CE_ProgressBar, option);
  const int full = width() * value() / kSteps;
  const QRect begun = QStyle::visualRect(layoutDirection(), rect(), QRect(0, 0, full, height()));
  const QColor bar = palette().color(QPalette::Highlight);
  painter.setLayoutDirection(text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
  painter.setClipRegion(QRegion(rect()) - begun);
  painter.setPen(palette().color(QPalette::Text));
  painter.drawText(rect(), Qt::AlignCenter, text());
  painter.setClipRect(begun);
  painter.setPen(Readable(palette().color(QPalette::HighlightedText), bar));
  painter.drawText(rect(), Qt::AlignCenter, text());
}

}  // namespace quillcast::desktop

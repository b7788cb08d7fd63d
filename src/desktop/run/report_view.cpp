#include "desktop/run/report_view.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr int kMargin = 6;         // pixels
constexpr int kWidestLine = 4000;  // of the horizontal scroll bar
constexpr std::ptrdiff_t kMostCopied = 1000000;

}  // namespace

ReportView::ReportView(QWidget* parent)
    : QAbstractScrollArea(parent),
      empty_(new EmptyState(this, tr("The report appears here while the messages go out."))) {
  setLayoutDirection(Qt::LeftToRight);  // a report is English in every locale
  setObjectName("Report");
  setAccessibleName(tr("Report"));
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setBackgroundRole(QPalette::Base);
  viewport()->setAutoFillBackground(true);
  viewport()->setCursor(Qt::IBeamCursor);
}

void ReportView::Open(const std::filesystem::path& file) {
  auto lines = run::ReportLines::Open(file);
  lines_.reset();
  if (lines) lines_ = std::move(*lines);
  anchor_ = caret_ = -1;
  Update();
}

void ReportView::Update() {
  if (!lines_) return;
  const auto more = lines_->Update();
  if (!more || !*more) return;
  empty_->setVisible(line_count() == 0);
  SetRange();
  viewport()->update();
}

QString ReportView::LineAt(std::size_t line) const { return lines_ ? ToQt(lines_->At(line)) : QString(); }

int ReportView::LineHeight() const { return fontMetrics().lineSpacing(); }
int ReportView::VisibleLines() const { return std::max(1, (viewport()->height() - kMargin) / LineHeight()); }

// Where the end was in view it stays there.
void ReportView::SetRange() {
  const int lines = static_cast<int>(line_count());
  const bool at_end = verticalScrollBar()->value() == verticalScrollBar()->maximum();
  verticalScrollBar()->setPageStep(VisibleLines());
  verticalScrollBar()->setRange(0, std::max(0, lines - VisibleLines()));
  if (at_end) verticalScrollBar()->setValue(verticalScrollBar()->maximum());
  horizontalScrollBar()->setPageStep(viewport()->width());
  horizontalScrollBar()->setRange(0, lines == 0 ? 0 : std::max(0, kWidestLine - viewport()->width()));
}

void ReportView::resizeEvent(QResizeEvent*) { SetRange(); }

void ReportView::paintEvent(QPaintEvent*) {
  QPainter painter(viewport());
  painter.setLayoutDirection(Qt::LeftToRight);
  const int first = verticalScrollBar()->value();
  const int x = kMargin - horizontalScrollBar()->value();
  const auto [low, high] = std::minmax(anchor_, caret_);
  for (int row = 0; row <= VisibleLines() && first + row < static_cast<int>(line_count()); ++row) {
    const QRect place(0, kMargin + row * LineHeight(), viewport()->width(), LineHeight());
    const bool is_selected = anchor_ >= 0 && first + row >= low && first + row <= high;
    if (is_selected) painter.fillRect(place, palette().brush(QPalette::Highlight));
    painter.setPen(palette().color(is_selected ? QPalette::HighlightedText : QPalette::Text));
    painter.drawText(x, place.top() + fontMetrics().ascent(),
                     LineAt(static_cast<std::size_t>(first) + static_cast<std::size_t>(row)));
  }
}

std::ptrdiff_t ReportView::LineUnder(const QPoint& position) const {
  const auto line = verticalScrollBar()->value() + (position.y() - kMargin) / LineHeight();
  return std::clamp<std::ptrdiff_t>(line, 0, static_cast<std::ptrdiff_t>(line_count()) - 1);
}

void ReportView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || line_count() == 0) return;
  caret_ = LineUnder(event->pos());
  if (anchor_ < 0 || !event->modifiers().testFlag(Qt::ShiftModifier)) anchor_ = caret_;
  viewport()->update();
}

void ReportView::mouseMoveEvent(QMouseEvent* event) {
  if (!event->buttons().testFlag(Qt::LeftButton) || anchor_ < 0) return;
  caret_ = LineUnder(event->pos());
  viewport()->update();
}

// Where a key takes the caret to; -1 for a key that does not move it.
std::ptrdiff_t ReportView::LineAfter(int key) const {
  const std::ptrdiff_t top = verticalScrollBar()->value();
  switch (key) {
    case Qt::Key_Up:
      return std::max<std::ptrdiff_t>(0, caret_ < 0 ? top : caret_ - 1);
    case Qt::Key_Down:
      return caret_ < 0 ? top : caret_ + 1;
    case Qt::Key_PageUp:
      return std::max<std::ptrdiff_t>(0, std::max(caret_, top) - VisibleLines());
    case Qt::Key_PageDown:
      return std::max(caret_, top) + VisibleLines();
    case Qt::Key_Home:
      return 0;
    case Qt::Key_End:
      return static_cast<std::ptrdiff_t>(line_count()) - 1;
    default:
      return -1;
  }
}

// A screen reader hears the line that the caret comes to.
void ReportView::MoveTo(std::ptrdiff_t line, bool extend) {
  caret_ = std::min(line, static_cast<std::ptrdiff_t>(line_count()) - 1);
  if (!extend || anchor_ < 0) anchor_ = caret_;
  auto* bar = verticalScrollBar();
  if (caret_ < bar->value()) bar->setValue(static_cast<int>(caret_));
  if (caret_ >= bar->value() + VisibleLines()) bar->setValue(static_cast<int>(caret_) - VisibleLines() + 1);
  setAccessibleDescription(LineAt(static_cast<std::size_t>(caret_)));
  viewport()->update();
}

void ReportView::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    Copy();
  } else if (event->matches(QKeySequence::SelectAll)) {
    anchor_ = 0;
    caret_ = static_cast<std::ptrdiff_t>(line_count()) - 1;
    viewport()->update();
  } else if (const auto line = LineAfter(event->key()); line >= 0 && line_count() > 0) {
    MoveTo(line, event->modifiers().testFlag(Qt::ShiftModifier));
  } else {
    QAbstractScrollArea::keyPressEvent(event);
  }
}

void ReportView::contextMenuEvent(QContextMenuEvent* event) {
  auto* menu = new QMenu(window());
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addAction(anchor_ < 0 ? tr("Copy all") : tr("Copy"), this, &ReportView::Copy);
  menu->popup(event->globalPos());
}

void ReportView::Copy() const {
  if (line_count() == 0) return;
  const std::ptrdiff_t last = static_cast<std::ptrdiff_t>(line_count()) - 1;
  const std::ptrdiff_t low = anchor_ < 0 ? 0 : std::min(anchor_, caret_);
  const std::ptrdiff_t high = std::min(anchor_ < 0 ? last : std::max(anchor_, caret_), low + kMostCopied - 1);
  QString text;
  for (auto line = low; line <= high; ++line) text += LineAt(static_cast<std::size_t>(line)) + '\n';
  QGuiApplication::clipboard()->setText(text);
}

}  // namespace quillcast::desktop

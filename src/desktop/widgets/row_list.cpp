#include "desktop/widgets/row_list.h"

#include <QClipboard>
#include <QEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QScrollBar>
#include <algorithm>
#include <numeric>

#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/first_key.h"
#include "desktop/widgets/own_direction.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_colours.h"

namespace quillcast::desktop {
namespace {

constexpr int kRoom = 8;  // pixels above and below the text of a row together

bool AnyTitle(const std::vector<RowColumn>& columns) {
  return std::any_of(columns.begin(), columns.end(), [](const RowColumn& column) { return !column.title.isEmpty(); });
}

void Paint(QWidget& widget, QPalette::ColorRole ground, QPalette::ColorRole text, const OnGround& colours) {
  QPalette palette = widget.palette();
  if (palette.color(ground) == colours.ground && palette.color(text) == colours.text) return;
  palette.setColor(ground, colours.ground);
  palette.setColor(text, colours.text);
  widget.setPalette(palette);
}

}  // namespace

RowModel::RowModel(std::vector<RowColumn> columns, Cell cell, RowColourSet colours, QObject* parent)
    : QAbstractTableModel(parent),
      columns_(std::move(columns)),
      cell_(std::move(cell)),
      colours_(colours),
      has_head_(AnyTitle(columns_)) {}

void RowModel::Reset(std::size_t rows) {
  beginResetModel();
  rows_ = static_cast<int>(rows);
  endResetModel();
}

void RowModel::Grow(std::size_t rows) {
  const int count = static_cast<int>(rows);
  if (count <= rows_) return;
  beginInsertRows({}, rows_, count - 1);
  rows_ = count;
  endInsertRows();
}

int RowModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int RowModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant RowModel::data(const QModelIndex& index, int role) const {
  const bool is_given = colours_ == RowColourSet::kGiven;
  switch (role) {
    case Qt::DisplayRole:
      return cell_(static_cast<std::size_t>(index.row()), index.column());
    case Qt::ToolTipRole:
      return PlainTip(cell_(static_cast<std::size_t>(index.row()), index.column()));
    case Qt::TextAlignmentRole: {
      const bool is_number = columns_.at(static_cast<std::size_t>(index.column())).is_number;
      return QVariant::fromValue(Qt::Alignment((is_number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
    }
    case Qt::BackgroundRole:
      return is_given ? QVariant(RowColours(index.row(), has_head_).ground) : QVariant();
    case Qt::ForegroundRole:
      return is_given ? QVariant(RowColours(index.row(), has_head_).text) : QVariant();
    default:
      return {};
  }
}

QVariant RowModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return columns_.at(static_cast<std::size_t>(section)).title;
}

RowList::RowList(const char* name, const QString& accessible_name, std::vector<RowColumn> columns, RowModel::Cell cell,
                 QWidget* parent, RowColourSet colours)
    : QTableView(parent),
      colours_(colours),
      rows_(new RowModel(columns, std::move(cell), colours, this)),
      empty_(new EmptyState(this)) {
  setObjectName(name);
  setAccessibleName(accessible_name);
  setModel(rows_);
  setSelectionBehavior(SelectRows);
  setSelectionMode(SingleSelection);
  setEditTriggers(NoEditTriggers);
  setAlternatingRowColors(colours == RowColourSet::kPalette);
  setShowGrid(false);
  setWordWrap(false);
  setTabKeyNavigation(false);
  setItemDelegate(new OwnDirection(this));
  new FirstKey(this);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRoom);
  horizontalHeader()->setVisible(rows_->has_head());
  horizontalHeader()->setStretchLastSection(true);
  horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  horizontalHeader()->setHighlightSections(false);
  for (std::size_t i = 0; i + 1 < columns.size(); ++i) {
    setColumnWidth(static_cast<int>(i), columns[i].letters * fontMetrics().averageCharWidth() + 2 * kRoom);
  }
  TakeColours();
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &RowList::ChosenChanged);
}

void RowList::SetLongText(LongText long_text) {
  long_text_ = long_text;
  setWordWrap(long_text == LongText::kWrapped);
  if (long_text == LongText::kWrapped) setVerticalScrollMode(ScrollPerPixel);  // a row may be higher than the list
  if (long_text != LongText::kWhole) return;
  setHorizontalScrollMode(ScrollPerPixel);
  horizontalHeader()->setStretchLastSection(false);
  connect(horizontalHeader(), &QHeaderView::sectionResized, this, &RowList::FitLastColumn);
}

void RowList::Reset(std::size_t rows) {
  rows_->Reset(rows);
  widest_ = 0;
  Fit();
  ShowEmpty();
  emit ChosenChanged();
}

QModelIndex RowList::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
  if (action == MoveHome) return rows_->index(0, 0);
  if (action == MoveEnd) return rows_->index(rows_->rowCount({}) - 1, 0);
  if (long_text_ == LongText::kWhole && (action == MoveLeft || action == MoveRight)) {
    ScrollSideways(action == MoveRight);
    return currentIndex();
  }
  return QTableView::moveCursor(action, modifiers);
}

void RowList::Grow(std::size_t rows) {
  rows_->Grow(rows);
  Fit();
  ShowEmpty();
}

void RowList::SetEmptyText(const QString& text) {
  empty_->setText(text);
  ShowEmpty();
}

void RowList::ShowEmpty() { empty_->setVisible(size() == 0); }

std::vector<std::size_t> RowList::Chosen() const {
  std::vector<std::size_t> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {  // a million rows are one range
    for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(static_cast<std::size_t>(row));
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

void RowList::Copy() const {
  if (size() == 0) return;  // what the clipboard holds stays
  std::vector<std::size_t> rows = Chosen();
  if (rows.empty()) {
    rows.resize(size());
    std::iota(rows.begin(), rows.end(), 0U);
  }
  QString text;
  for (const std::size_t row : rows) {
    for (int column = 0; column < rows_->columnCount(); ++column) {
      QString cell = rows_->index(static_cast<int>(row), column).data().toString();
      text += (column == 0 ? "" : "\t") + cell.replace('\n', ' ').replace('\t', ' ');
    }
    text += '\n';
  }
  QGuiApplication::clipboard()->setText(text);
}

void RowList::keyPressEvent(QKeyEvent* event) {
  if (!event->matches(QKeySequence::Copy)) return QTableView::keyPressEvent(event);
  Copy();
}

void RowList::keyboardSearch(const QString& text) {
  if (typed_) return typed_(text);
  QTableView::keyboardSearch(text);
}

void RowList::Choose(std::size_t row) { setCurrentIndex(rows_->index(static_cast<int>(row), 0)); }

void RowList::ChooseNone() { selectionModel()->clear(); }

void RowList::MakeCurrent(std::size_t row) {
  selectionModel()->setCurrentIndex(rows_->index(static_cast<int>(row), 0), QItemSelectionModel::NoUpdate);
}

void RowList::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  Fit();
}

// Rows come on the screen.
void RowList::scrollContentsBy(int dx, int dy) {
  QTableView::scrollContentsBy(dx, dy);
  if (dy != 0 && long_text_ == LongText::kWhole) FitLastColumn();
}

void RowList::scrollTo(const QModelIndex& index, ScrollHint hint) {
  const int sideways = horizontalScrollBar()->value();
  QTableView::scrollTo(index, hint);
  if (long_text_ == LongText::kWhole) horizontalScrollBar()->setValue(sideways);
}

void RowList::Fit() {
  if (long_text_ == LongText::kWrapped) FitRows();
  if (long_text_ == LongText::kWhole) FitLastColumn();
}

void RowList::FitRows() {
  QHeaderView& heights = *verticalHeader();
  for (int row = 0; row < rows_->rowCount(); ++row) {
    heights.resizeSection(row, std::max(heights.defaultSectionSize(), sizeHintForRow(row)));
  }
}

void RowList::FitLastColumn() {
  const int column = rows_->columnCount() - 1;
  const int below = rowAt(viewport()->height());
  const int end = below < 0 ? rows_->rowCount() : below + 1;
  for (int row = std::max(rowAt(0), 0); row < end; ++row) {
    widest_ = std::max(widest_, sizeHintForIndex(rows_->index(row, column)).width());
  }
  setColumnWidth(column, std::max(widest_, viewport()->width() - horizontalHeader()->sectionPosition(column)));
}

void RowList::ScrollSideways(bool to_the_right) {
  QScrollBar* const bar = horizontalScrollBar();
  const bool is_on = to_the_right != isRightToLeft();
  bar->setValue(bar->value() + (is_on ? bar->singleStep() : -bar->singleStep()));
}

void RowList::changeEvent(QEvent* event) {
  QTableView::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) TakeColours();
}

void RowList::TakeColours() {
  if (colours_ != RowColourSet::kGiven) return;
  Paint(*this, QPalette::Highlight, QPalette::HighlightedText, kChosenRow);
  Paint(*horizontalHeader(), QPalette::Button, QPalette::ButtonText, kHeadRow);
}

}  // namespace quillcast::desktop

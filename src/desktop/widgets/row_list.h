// A list of rows in one or more columns. Each cell is asked for only when it is on the screen, so that a hundred
// thousand rows cost what a screenful does.
#pragma once

#include <QAbstractTableModel>
#include <QTableView>
#include <functional>
#include <vector>

namespace quillcast::desktop {

class EmptyState;

struct RowColumn {
  QString title;    // where no column has one, the list has no head
  int letters = 0;  // so wide at first; the last column takes what is left
  bool is_number = false;
};

// Those of the palette, or the given ones; see row_colours.h.
enum class RowColourSet { kPalette, kGiven };

// What becomes of a text that is longer than its column is wide. The tip shows it whole in each case.
enum class LongText {
  kCut,      // it ends in three dots
  kWrapped,  // it goes on below, and its row is as high as it takes: for lists that are short
  kWhole,    // the last column is as wide as the longest text that was on the screen, and the list scrolls sideways
};

class RowModel final : public QAbstractTableModel {
 public:
  // What stands in a cell; asked with rows below the number that was told last.
  using Cell = std::function<QString(std::size_t row, int column)>;

  RowModel(std::vector<RowColumn> columns, Cell cell, RowColourSet colours, QObject* parent);

  // All rows are others now, and so many.
  void Reset(std::size_t rows);
  // Rows were added below those that were there.
  void Grow(std::size_t rows);
  bool has_head() const { return has_head_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  const std::vector<RowColumn> columns_;
  const Cell cell_;
  const RowColourSet colours_;
  const bool has_head_;
  int rows_ = 0;
};

// Rows are chosen whole: one at a time, or several after setSelectionMode. The first arrow key in a list with nothing
// chosen chooses the current row. Return goes on to the window's default button.
class RowList final : public QTableView {
  Q_OBJECT
 public:
  RowList(const char* name, const QString& accessible_name, std::vector<RowColumn> columns, RowModel::Cell cell,
          QWidget* parent, RowColourSet colours = RowColourSet::kPalette);

  // See RowModel. What was chosen is chosen no more after Reset.
  void Reset(std::size_t rows);
  void Grow(std::size_t rows);
  std::size_t size() const { return static_cast<std::size_t>(rows_->rowCount()); }
  // Before there are rows; kCut at first. Where the list scrolls sideways, the keys Left and Right do that.
  void SetLongText(LongText long_text);
  // The chosen rows, or all where none is chosen, come to the clipboard: a line each, their cells parted by tabs. So
  // does the key for it.
  void Copy() const;
  // What stands in the list while it has no rows: what belongs there, and the next step to it.
  void SetEmptyText(const QString& text);

  // From above to below.
  std::vector<std::size_t> Chosen() const;
  void Choose(std::size_t row);
  void ChooseNone();
  // Puts the ring round it that the keyboard goes on from, and chooses nobody.
  void MakeCurrent(std::size_t row);
  // What a person types is handed on, instead of looking through every row for it.
  void OnTyping(std::function<void(const QString& text)> typed) { typed_ = std::move(typed); }
  void keyboardSearch(const QString& text) override;
  // In a list that scrolls sideways it is not scrolled back to where its rows begin.
  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

 signals:
  void ChosenChanged();

 protected:
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  // Home and End go to the first and the last row; in a table they would go along the one.
  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

 private:
  void TakeColours();
  void ShowEmpty();
  void Fit();
  void FitRows();
  void FitLastColumn();
  void ScrollSideways(bool to_the_right);

  RowColourSet colours_;
  LongText long_text_ = LongText::kCut;
  int widest_ = 0;  // pixels: the longest text of the last column so far
  RowModel* rows_;
  EmptyState* empty_;
  std::function<void(const QString&)> typed_;
};

}  // namespace quillcast::desktop

#include "desktop/recipients/import_sample_table.h"

#include <QComboBox>
#include <QEvent>
#include <QHeaderView>
#include <QSignalBlocker>

#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/own_direction.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kLongestShown = 200;  // bytes of a field
constexpr int kColumnWidth = 150;

}  // namespace

ImportSampleTable::ImportSampleTable(QWidget* parent) : QTableWidget(parent), empty_(new EmptyState(this)) {
  Clear();
  setObjectName("SampleTable");
  setAccessibleName(tr("First lines of the file"));
  setEditTriggers(NoEditTriggers);
  setTabKeyNavigation(false);
  setWordWrap(false);
  setItemDelegate(new OwnDirection(this));
  horizontalHeader()->hide();
  horizontalHeader()->setDefaultSectionSize(kColumnWidth);
  verticalHeader()->hide();
}

void ImportSampleTable::Clear(const QString& why) {
  setRowCount(0);
  setColumnCount(0);
  empty_->setText(why.isEmpty() ? tr("The first lines of the file stand here once it is chosen.") : why);
  empty_->show();
}

void ImportSampleTable::AddHeadings(int columns) {
  for (int column = columnCount(); column < columns; ++column) {
    insertColumn(column);
    auto* heading = new QComboBox();
    heading->setObjectName(QString("HeadingComboBox%1").arg(column + 1));
    heading->setAccessibleName(tr("Field %1 goes into").arg(column + 1));
    heading->addItem(Translated(recipients::kIgnoreEntry));
    for (const auto& field : recipients::kFields) heading->addItem(Translated(field.label));
    setCellWidget(0, column, heading);
    connect(heading, &QComboBox::activated, this, [this, column](int entry) {
      const auto place = static_cast<std::size_t>(entry);
      emit Chosen(column + 1, place == 0 ? recipients::kFieldCount : place - 1);
    });
  }
}

void ImportSampleTable::Show(const recipients::ImportSample& sample, bool quotes, std::int64_t skip) {
  std::size_t most = 0;
  for (const auto& line : sample.lines) most = std::max(most, line.texts.size());
  const int columns = static_cast<int>(std::min<std::size_t>(most, recipients::kSourceFields));
  if (columns == 0) return Clear(tr("There is nothing in the file."));
  empty_->hide();
  setCurrentCell(-1, -1);  // else the row of headings becomes the current one, and takes the keyboard from elsewhere
  setRowCount(1);
  if (columnCount() > columns) setColumnCount(columns);
  AddHeadings(columns);
  for (const auto& line : sample.lines) {
    if (line.number > skip) AddLine(line, quotes);
  }
  // A row with lists hands the keyboard on to them.
  if (rowCount() > 1 && currentRow() < 1) setCurrentCell(1, 0);
  Dim();
}

void ImportSampleTable::AddLine(const recipients::SampleLine& line, bool quotes) {
  const int row = rowCount();
  const auto fields = line.Fields();
  setRowCount(row + 1);
  for (int column = 0; column < columnCount(); ++column) {
    const auto place = static_cast<std::size_t>(column);
    std::string_view text = place < fields.size() ? fields[place] : "";
    if (quotes) text = recipients::WithoutQuotes(text);
    setItem(row, column, new QTableWidgetItem(ToQt(platform::Printable(text, kLongestShown))));
  }
}

QComboBox* ImportSampleTable::HeadingOf(int column) const { return qobject_cast<QComboBox*>(cellWidget(0, column)); }

void ImportSampleTable::ShowMapping(const recipients::ImportMapping& mapping) {
  mapping_ = mapping;
  for (int column = 0; column < columnCount(); ++column) {
    const auto& source = mapping.source;
    const auto* taken = std::find(source.begin(), source.end(), column + 1);
    const QSignalBlocker quiet(HeadingOf(column));
    HeadingOf(column)->setCurrentIndex(taken == source.end() ? 0 : static_cast<int>(taken - source.begin()) + 1);
  }
  Dim();
}

void ImportSampleTable::Dim() {
  for (int column = 0; column < columnCount(); ++column) {
    const auto& source = mapping_.source;
    const bool is_taken = std::find(source.begin(), source.end(), column + 1) != source.end();
    const QColor colour = palette().color(is_taken ? QPalette::Text : QPalette::PlaceholderText);
    for (int row = 1; row < rowCount(); ++row) {
      if (QTableWidgetItem* cell = item(row, column)) cell->setForeground(colour);
    }
  }
}

void ImportSampleTable::changeEvent(QEvent* event) {
  QTableWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange) Dim();
}

}  // namespace quillcast::desktop

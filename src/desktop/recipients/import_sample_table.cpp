#include "desktop/recipients/import_sample_table.h"

#include <QComboBox>
#include <QEvent>
#include <QHeaderView>
#include <QSignalBlocker>

#include "desktop/widgets/empty_state.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kLongestShown = 200;  // bytes of a field
constexpr int kColumnWidth = 150;

}  // namespace

ImportSampleTable::ImportSampleTable(QWidget* parent)
    : QTableWidget(parent),
      empty_(new EmptyState(this, tr("The first lines of the file stand here once it is chosen."))) {
  setObjectName("SampleTable");
  setAccessibleName(tr("First lines of the file"));
  setEditTriggers(NoEditTriggers);
  setTabKeyNavigation(false);
  setWordWrap(false);
  horizontalHeader()->hide();
  horizontalHeader()->setDefaultSectionSize(kColumnWidth);
  verticalHeader()->hide();
}

void ImportSampleTable::Clear() {
  setRowCount(0);
  setColumnCount(0);
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

void ImportSampleTable::Show(const recipients::ImportSample& sample, bool quotes, bool skips_first) {
  std::size_t most = 0;
  for (const auto& line : sample.lines) most = std::max(most, line.texts.size());
  const int columns = static_cast<int>(std::min<std::size_t>(most, recipients::kSourceFields));
  if (columns == 0) return Clear();
  empty_->hide();
  const int first = skips_first ? 1 : 0;
  setRowCount(std::max(1, 1 + static_cast<int>(sample.lines.size()) - first));
  if (columnCount() > columns) setColumnCount(columns);
  AddHeadings(columns);
  for (int row = 1; row < rowCount(); ++row) {
    const auto place = static_cast<std::size_t>(row) - 1 + static_cast<std::size_t>(first);
    const auto fields = sample.lines[place].Fields();
    for (int column = 0; column < columns; ++column) {
      std::string_view text =
          static_cast<std::size_t>(column) < fields.size() ? fields[static_cast<std::size_t>(column)] : "";
      if (quotes) text = recipients::WithoutQuotes(text);
      setItem(row, column, new QTableWidgetItem(ToQt(platform::Printable(text, kLongestShown))));
    }
  }
  // A row with lists hands the keyboard on to them.
  if (rowCount() > 1 && currentRow() < 1) setCurrentCell(1, 0);
  Dim();
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
  if (event->type() == QEvent::PaletteChange) Dim();
}

}  // namespace quillcast::desktop

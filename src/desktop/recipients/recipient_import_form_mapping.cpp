// The part of the dialog that says which field of the file goes where.
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

#include "desktop/recipients/import_mapping_panel.h"
#include "desktop/recipients/import_sample_table.h"
#include "desktop/recipients/kept_mapping_box.h"
#include "desktop/recipients/recipient_import_form.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "recipients/import/taken_fields.h"

namespace quillcast::desktop {

// Of the headings where they are left out, which say more than the first recipient; else of the first line.
std::vector<std::string_view> RecipientImportForm::FieldsToChoose() const {
  if (!sample_ || sample_->lines.empty()) return {};
  const auto& lines = sample_->lines;
  const auto behind = std::find_if(lines.begin(), lines.end(),
                                   [skip = SkippedLines()](const auto& line) { return line.number > skip; });
  return behind == lines.begin() ? behind->Fields() : std::prev(behind)->Fields();
}

recipients::FileFormat RecipientImportForm::Format() const {
  return sample_ ? sample_->facts.format : recipients::FileFormat::kDelimited;
}

bool RecipientImportForm::TakesQuotesOff() const { return quotes_->isChecked() && recipients::MayHaveQuotes(Format()); }

// Lines of a spreadsheet are numbered with those that are empty: the first one may be the third row.
std::int64_t RecipientImportForm::SkippedLines() const {
  if (!skip_->isChecked() || !skip_->isEnabled()) return 0;
  if (recipients::SkipsMany(skipped_)) return skipped_;  // the first line of the sample is none of the file's first
  const std::int64_t first = sample_ && !sample_->lines.empty() ? sample_->lines.front().number : 1;
  return std::max(skipped_, first);
}

void RecipientImportForm::SkipLines(std::int64_t lines) {
  skipped_ = std::max<std::int64_t>(lines, 1);
  skip_->setText(lines > 1 ? tr("Leave the first %1 lines o&ut").arg(ToQt(platform::WithThousands(lines)))
                           : tr("Leave the first line o&ut, it has headings"));
  skip_->setChecked(lines > 0);
}

void RecipientImportForm::OfferFields() {
  mapping_->Offer(recipients::SampleEntries(FieldsToChoose(), TakesQuotesOff()));
}

// A field of a recipient comes from one field of the line; a field of the line may go into several, of which the list
// above it shows the first.
void RecipientImportForm::TakeHeading(int source, std::size_t field) {
  recipients::ImportMapping mapping = mapping_->Mapping();
  if (look_->is_running()) {  // the table shows another reading than the one that is imported
    awaited_.Drop();
    return table_->ShowMapping(mapping);
  }
  if (!mapping_->Offers(source)) OfferFields();  // the lists are of another reading, or of none
  std::replace(mapping.source.begin(), mapping.source.end(), source, recipients::kIgnore);
  if (field < mapping.source.size()) mapping.source[field] = source;
  mapping_->Choose(mapping);
}

void RecipientImportForm::Propose() {
  awaited_.Drop();
  if (!TakeTyped()) return;
  if (look_->is_running()) return AwaitFields({Source::kHeadings});
  TakeProposal();
}

// What stands behind the eighteenth comes among the fields first.
void RecipientImportForm::TakeProposal() {
  if (!proposed_ || !sample_ || sample_->lines.empty()) return;
  if (!proposed_->beyond.empty()) {
    ShowColumns(proposed_->columns);
    AwaitFields({Source::kHeadings});
    return LookAtFile();
  }
  SkipLines(proposed_->skip);
  OfferFields();
  mapping_->Choose(proposed_->mapping);
}

void RecipientImportForm::ShowColumns(const std::vector<std::size_t>& columns) {
  columns_ = columns;
  columns_box_->setText(ToQt(recipients::ColumnsText(columns)));
}

// False where the box names no columns. Where they are others than before, the fields that were chosen are others too.
bool RecipientImportForm::TakeColumns() {
  if (!take_->isEnabled()) return true;  // they count for no file of this kind
  auto columns = recipients::ParseColumns(FromQt(columns_box_->text()));
  if (!columns) {
    status_->Fail(columns.error());
    return false;
  }
  if (*columns == columns_) return true;
  columns_ = std::move(*columns);
  AwaitFields({Source::kFirstLine});
  LookAtFile();
  return true;
}

recipients::KeptMapping RecipientImportForm::Current() const {
  return {.name = {},
          .mapping = mapping_->Mapping(),
          .delimiter = delimiter_->currentData().toChar().toLatin1(),
          .quotes = TakesQuotesOff(),
          .rfc4180 = rfc4180_->isChecked(),
          .skip = SkippedLines(),
          .sheet = sheet_choice_.picked(),
          .encoding = Reading().encoding,
          .columns = columns_};
}

void RecipientImportForm::KeepMapping() {
  awaited_.DropDeed();
  if (!TakeTyped()) return;
  if (look_->is_running() && !looked_at_.isEmpty()) return awaited_.Do(recipients::AwaitedDeed::kKeep, Form());
  KeepNow();
}

void RecipientImportForm::KeepNow() {
  const auto current = Current();
  if (const auto complaint = recipients::CheckKeeping(current.mapping)) {
    program_.prompts.Warn(complaint->message);
    FocusOn(*complaint->control);
    return;
  }
  kept_->Keep(current, QFileInfo(file_->text()).completeBaseName());
}

void RecipientImportForm::ApplyMapping(const recipients::KeptMapping& kept) {
  awaited_.Drop();
  TakeTypedFile();
  if (const auto complaint = recipients::CheckSample(FromQt(file_->text()))) {
    program_.prompts.Warn(complaint->message);
    FocusOn(*complaint->control);
    return;
  }
  TakeReading(kept);
  AwaitFields({Source::kMapping, kept});
  EnableControls();
  LookAtFile();
}

// How the lines are cut comes first: the fields to choose from hang on it.
void RecipientImportForm::TakeReading(const recipients::KeptMapping& kept) {
  delimiter_->setCurrentIndex(delimiter_->findData(QChar::fromLatin1(kept.delimiter)));
  delimiter_is_open_ = false;
  const QSignalBlocker quiet_quotes(quotes_);
  const QSignalBlocker quiet_rfc4180(rfc4180_);
  quotes_->setChecked(kept.quotes);
  rfc4180_->setChecked(kept.rfc4180 && !kept.quotes);
  SkipLines(kept.skip);
  ShowColumns(kept.columns);
  TakeSource(kept);
}

// What the lines are read of; a mapping that says nothing of it leaves it as it is.
void RecipientImportForm::TakeSource(const recipients::KeptMapping& kept) {
  if (!kept.encoding.empty()) {
    const int known = encoding_->findText(ToQt(kept.encoding), Qt::MatchFixedString);
    if (known > 0) encoding_->setCurrentIndex(known);
    if (known <= 0) encoding_->setEditText(ToQt(kept.encoding));
  }
  if (!kept.sheet.empty()) sheet_choice_.Want(kept.sheet);
}

// An import that waits was to be of the sheet that was chosen, and of no other.
std::optional<Sentence> RecipientImportForm::TakeSheet() {
  auto lacking = sheet_choice_.Take(sample_->facts.sheet);
  if (lacking && awaited_.deed() == recipients::AwaitedDeed::kImport) GiveDeedUp();
  return lacking;
}

std::optional<Sentence> RecipientImportForm::ChooseMapping(const recipients::AwaitedFields& fields) {
  if (fields.source != Source::kMapping) return {};
  OfferFields();
  const auto fitted = recipients::FitMapping(fields.mapping.mapping, FieldsToChoose().size());
  mapping_->Choose(fitted.mapping);
  return recipients::DescribeLacking(fitted, fields.mapping.mapping);
}

}  // namespace quillcast::desktop

// The part of the dialog that looks at the file before anything is imported.
#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTimer>

#include "desktop/recipients/import_mapping_panel.h"
#include "desktop/recipients/import_sample_table.h"
#include "desktop/recipients/recipient_import_form.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/locale_codeset.h"

namespace quillcast::desktop {
namespace {

constexpr int kSlowLook = 200;  // milliseconds, after which it is said that one is under way

}  // namespace

void RecipientImportForm::dragEnterEvent(QDragEnterEvent* event) {
  if (file_->isEnabled() && !DroppedFiles(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void RecipientImportForm::dropEvent(QDropEvent* event) {
  const QStringList files = DroppedFiles(event->mimeData());
  if (files.isEmpty() || !file_->isEnabled()) return;
  event->acceptProposedAction();
  TakeFile(files.front());
}

void RecipientImportForm::Browse() {
  const auto files = program_.prompts.PickOpenFile(
      {.title = "Import Recipients",
       .filter = "Lists (*.txt;*.csv;*.tsv;*.xlsx;*.ods;*.vcf;*.ldif)|*.txt;*.csv;*.tsv;*.xlsx;*.ods;*.vcf;*.ldif|"
                 "All Files (*.*)|*.*"});
  if (!files.empty()) TakeFile(PathToQt(files.front()));
}

// What was read of another file is no longer there, and what was picked for it does not hold.
void RecipientImportForm::SetBack() {
  ForgetSample();
  awaited_.Drop();
  SkipLines(0);  // the headings were the other file's
  sheet_->clear();
  sheet_choice_ = {};
  mapping_->Offer({});
  bar_->Count(0, 1);
  Warn({});
  status_->Say({});
}

void RecipientImportForm::TakeFile(const QString& file) {
  const bool had_file = !looked_at_.isEmpty();
  const FileChoices left = Chosen();
  if (had_file) remembered_.insert(looked_at_, left);
  file_->setText(file);
  looked_at_ = file;
  SetBack();
  if (had_file) {
    delimiter_is_open_ = true;
    ShowColumns({});
    const QSignalBlocker quiet_quotes(quotes_);
    const QSignalBlocker quiet_rfc4180(rfc4180_);
    quotes_->setChecked(false);
    rfc4180_->setChecked(false);
    kind_->setCurrentIndex(0);
    encoding_->setCurrentIndex(0);
  }
  kind_->setItemText(0, tr("Find out"));
  const auto back = remembered_.constFind(file);
  if (back != remembered_.cend()) TakeChoices(*back);
  const bool has_mapping = back != remembered_.cend() && !back->mapping.mapping.IsAllIgnore();
  was_set_back_ = !left.mapping.mapping.IsAllIgnore() && !has_mapping;
  EnableControls();
  LookAtFile();
}

// Also where the mode that is ticked by now takes no notice of it.
RecipientImportForm::FileChoices RecipientImportForm::Chosen() const {
  FileChoices chosen{Current(), sheet_choice_, kind_->currentIndex(), delimiter_is_open_};
  chosen.mapping.sheet.clear();  // beside it
  chosen.mapping.quotes = quotes_->isChecked();
  chosen.mapping.skip = skip_->isChecked() ? skipped_ : 0;
  if (const auto* waiting = awaited_.MappingFor(Choices(Reading()))) chosen.mapping.mapping = waiting->mapping;
  return chosen;
}

void RecipientImportForm::TakeChoices(const FileChoices& chosen) {
  TakeReading(chosen.mapping);
  sheet_choice_ = chosen.sheet;
  kind_->setCurrentIndex(chosen.kind);
  delimiter_is_open_ = chosen.delimiter_is_open;
  if (!chosen.mapping.mapping.IsAllIgnore()) AwaitFields({Source::kMapping, chosen.mapping});
}

void RecipientImportForm::TakeTypedFile() {
  if (file_->text() != looked_at_) TakeFile(file_->text());
}

bool RecipientImportForm::TakeTyped() {
  TakeTypedFile();
  if (!TakeColumns()) {
    columns_box_->setFocus();
    return false;
  }
  LookAgain();  // the encoding
  return true;
}

void RecipientImportForm::GetData() {
  awaited_.Drop();
  if (!TakeTyped()) return;
  if (const auto complaint = recipients::CheckSample(FromQt(file_->text()))) {
    program_.prompts.Warn(complaint->message);
    FocusOn(*complaint->control);
    return;
  }
  known_.reset();
  AwaitFields({Source::kFirstLine});
  LookAtFile();
}

void RecipientImportForm::AwaitFields(recipients::AwaitedFields fields) {
  mapping_->Offer({});
  awaited_.Choose(std::move(fields));
  awaited_.ChosenFor(Choices(Reading()));
}

recipients::LookChoices RecipientImportForm::Choices(const recipients::ReadingOptions& reading) const {
  return {FromQt(looked_at_), reading, quotes_->isChecked(), skip_->isChecked()};
}

recipients::ReadingOptions RecipientImportForm::Reading() const {
  recipients::ReadingOptions reading;
  reading.format = static_cast<recipients::FileFormat>(kind_->currentData().toInt());
  reading.sheet = sheet_choice_.ToRead();
  reading.delimiter = delimiter_->currentData().toChar().toLatin1();
  reading.rfc4180 = rfc4180_->isChecked();
  if (encoding_->currentText() != encoding_->itemText(0)) reading.encoding = FromQt(encoding_->currentText());
  reading.columns = columns_;
  return reading;
}

// Where the file would be read in another way than it was.
void RecipientImportForm::LookAgain() {
  if (Reading() != read_as_) LookAtFile();
}

// One that is under way is given up.
void RecipientImportForm::LookAtFile() {
  if (looked_at_.isEmpty()) {
    slow_->stop();
    return look_->Cancel();
  }
  read_as_ = Reading();
  if (look_->is_running()) {
    look_again_ = true;
    return look_->Cancel();
  }
  slow_->start(kSlowLook);
  recipients::FileLookRequest request{.file = PathFromQt(looked_at_),
                                      .reading = read_as_,
                                      .skip = SkippedLines(),
                                      .finds_delimiter = delimiter_is_open_,
                                      .other_sheet = sheet_choice_.Otherwise()};
  if (read_as_.encoding.empty()) request.reading.known = known_;
  look_->Start([this, file = looked_at_, request](const platform::CancelToken& cancel) {
    const auto look = std::make_shared<Look>(recipients::LookAtFile(request, platform::LocaleCodeset(), &cancel));
    return [this, file, look] { TakeLook(file, *look); };
  });
}

void RecipientImportForm::TakeLook(const QString& file, const Look& look) {
  if (std::exchange(look_again_, false)) return LookAtFile();
  slow_->stop();
  if (file != looked_at_ || task_->is_running()) return;
  const auto fields = awaited_.TakeFields(Choices(read_as_));
  look.sample ? ShowLook(look, fields) : ShowNoLook(look, fields);
  if (!look_->is_running()) DoAwaited();
}

void RecipientImportForm::DoAwaited() {
  const auto deed = awaited_.TakeDeed(Form());
  if (deed == recipients::AwaitedDeed::kImport) ImportNow();
  if (deed == recipients::AwaitedDeed::kKeep) KeepNow();
}

// What another reading showed is not what this one would give.
void RecipientImportForm::ForgetSample(const QString& why) {
  sample_.reset();
  proposed_.reset();
  odd_.clear();
  is_quoted_ = false;
  known_.reset();
  table_->Clear(why);
}

void RecipientImportForm::ShowNoLook(const Look& look, const recipients::AwaitedFields& fields) {
  ForgetSample(tr("The file could not be read."));
  if (fields.source == Source::kFirstLine) OfferFields();
  if (fields.source == Source::kMapping) awaited_.Choose(fields);  // for when it can be read again
  const bool is_import = awaited_.deed() == recipients::AwaitedDeed::kImport;
  if (is_import && !recipients::CheckImport(Form())) awaited_.DropDeed();  // else what speaks against it is told
  import_was_given_up_ = false;                                            // why the file is not read says more
  Warn({});
  EnableControls();
  status_->Fail(look.sample.error());
}

void RecipientImportForm::TakeFormat(const Look& look) {
  const auto& facts = sample_->facts;
  if (delimiter_is_open_ && look.delimiter && look.delimiter->is_needed) {
    delimiter_is_open_ = false;
    delimiter_->setCurrentIndex(delimiter_->findData(QChar::fromLatin1(look.delimiter->delimiter.character)));
  }
  if (kind_->currentIndex() == 0)
    kind_->setItemText(0, tr("Found: %1").arg(Translated(recipients::NameOf(facts.format))));
  sheet_->clear();
  for (const std::string& sheet : look.sheets) sheet_->addItem(ToQt(sheet));
  sheet_->setCurrentIndex(sheet_->findText(ToQt(facts.sheet)));
  if (read_as_.encoding.empty() && !facts.encoding.name.empty()) known_ = facts.encoding;
}

void RecipientImportForm::ShowLook(const Look& look, const recipients::AwaitedFields& fields) {
  const std::string encoding = read_as_.encoding;  // another may be typed by now, which is looked for when it is done
  sample_ = *look.sample;
  proposed_ = recipients::ProposeMapping(*sample_, quotes_->isChecked());
  TakeFormat(look);
  EnableControls();
  const bool proposes = fields.source == Source::kHeadings && proposed_;
  if (fields.source != Source::kNothing && !proposes) OfferFields();
  SayHowItIsRead(look, fields);
  read_as_ = Reading();  // as the lists say it by now
  read_as_.encoding = encoding;
  ShowSample();
  if (proposes) TakeProposal();
}

void RecipientImportForm::ShowSample() {
  if (!sample_) return;
  table_->Show(*sample_, TakesQuotesOff(), SkippedLines());
  table_->ShowMapping(mapping_->Mapping());
}

void RecipientImportForm::SayHowItIsRead(const Look& look, const recipients::AwaitedFields& fields) {
  const auto& facts = sample_->facts;
  odd_.clear();
  for (auto& lacking : {TakeSheet(), ChooseMapping(fields)})
    if (lacking) odd_.push_back(*lacking);
  for (auto& sentence : recipients::Describe(facts)) odd_.push_back(std::move(sentence));
  QStringList sentences = {tr("Format: %1.").arg(Translated(recipients::NameOf(facts.format)))};
  if (sheets_->isVisibleTo(this))
    sentences << tr("One of %1 sheets.").arg(ToQt(platform::WithThousands(sheet_->count())));
  if (!facts.encoding.name.empty()) {
    sentences << tr("Encoding: %1 (%2).").arg(ToQt(facts.encoding.name), Translated(facts.encoding.how_known));
  }
  if (facts.format == recipients::FileFormat::kDelimited && look.delimiter && look.delimiter->is_needed) {
    sentences << tr("The delimiter seems to be “%1”.").arg(Translated(look.delimiter->delimiter.name));
  }
  if (fields.source == Source::kHeadings && !proposed_) sentences << tr("None of the first lines looks like headings.");
  if (columns_.empty() && recipients::HasMoreFields(*sample_))
    sentences << tr("The first 18 fields of a line can be chosen; “Columns” makes others the ones that can.");
  if (std::exchange(import_was_given_up_, false)) sentences << tr("The import that waited was given up.");
  status_->Say(sentences.join(' '));
  is_quoted_ = look.delimiter && look.delimiter->is_quoted;
  ShowWarnings();
}

// What the person has seen to since the look is told no more.
void RecipientImportForm::ShowWarnings() {
  std::vector<Sentence> told = odd_;
  const auto mapping = mapping_->Mapping();
  const bool maps = delimited_->isChecked();  // a harvest takes addresses from wherever they stand
  if (maps && is_quoted_ && !quotes_->isChecked() && !rfc4180_->isChecked()) {
    recipients::ImportFindings findings;
    findings.quotes_unread = true;
    for (auto& sentence : recipients::Describe(findings)) told.push_back(std::move(sentence));
  }
  if (maps && proposed_) {
    if (auto beyond = recipients::DescribeBeyond(*proposed_)) told.push_back(std::move(*beyond));
  }
  if (maps && sample_) {
    auto none = recipients::DescribeNoAddress(*sample_, mapping, TakesQuotesOff(), SkippedLines());
    if (none) told.push_back(std::move(*none));
  }
  was_set_back_ = was_set_back_ && mapping.IsAllIgnore();
  if (was_set_back_)
    told.emplace_back(
        "The mapping of the other file was set back. “Apply” takes a mapping that is kept, “Keep As…” "
        "keeps one for the next file.");
  Warn(told);
}

void RecipientImportForm::Warn(const std::vector<Sentence>& sentences) {
  warnings_->SetText(InWords(sentences).join('\n'));
  warnings_->setVisible(!sentences.empty());
}

}  // namespace quillcast::desktop

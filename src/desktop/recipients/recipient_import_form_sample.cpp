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

constexpr std::size_t kLinesShown = 20;
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
  after_look_ = nullptr;
  waiting_.reset();
  SkipLines(0);  // the headings were the other file's
  sheet_->clear();
  sheet_is_picked_ = false;
  mapping_->Offer({});
  bar_->Count(0, 1);
  Warn({});
  status_->Say({});
}

void RecipientImportForm::TakeFile(const QString& file) {
  const bool had_file = !looked_at_.isEmpty();
  const bool had_mapping = waiting_ || !mapping_->Mapping().IsAllIgnore();
  if (had_file && had_mapping) remembered_.insert(looked_at_, waiting_ ? *waiting_ : Current());
  file_->setText(file);
  looked_at_ = file;
  SetBack();
  if (had_file) {
    delimiter_is_picked_ = false;
    ShowColumns({});
    const QSignalBlocker quiet_quotes(quotes_);
    const QSignalBlocker quiet_rfc4180(rfc4180_);
    quotes_->setChecked(false);
    rfc4180_->setChecked(false);
    kind_->setCurrentIndex(0);
    encoding_->setCurrentIndex(0);
  }
  kind_->setItemText(0, tr("Find out"));
  const auto remembered = remembered_.constFind(file);
  was_set_back_ = had_mapping && remembered == remembered_.cend();
  if (remembered != remembered_.cend()) TakeMapping(*remembered);
  EnableControls();
  if (!file.isEmpty()) LookAtFile({.is_new_file = true});
}

void RecipientImportForm::GetData() {
  if (const auto complaint = recipients::CheckSample(FromQt(file_->text()))) {
    program_.prompts.Warn(complaint->message);
    FocusOn(*complaint->control);
    return;
  }
  if (!TakeColumns()) return columns_box_->setFocus();
  looked_at_ = file_->text();
  waiting_.reset();
  known_.reset();
  LookAtFile({.fills_lists = true});
}

recipients::ReadingOptions RecipientImportForm::Reading() const {
  recipients::ReadingOptions reading;
  reading.format = static_cast<recipients::FileFormat>(kind_->currentData().toInt());
  if (sheet_->count() > 1) reading.sheet = FromQt(sheet_->currentText());
  if (sheet_->count() == 0 && waiting_) reading.sheet = waiting_->sheet;
  reading.delimiter = delimiter_->currentData().toChar().toLatin1();
  reading.rfc4180 = rfc4180_->isChecked();
  if (encoding_->currentText() != encoding_->itemText(0)) reading.encoding = FromQt(encoding_->currentText());
  reading.columns = columns_;
  return reading;
}

// Where the file would be read in another way than it was.
void RecipientImportForm::LookAgain() {
  if (Reading() != read_as_) LookAtFile({});
}

// A look that is under way is given up, and what it was for is looked for again.
void RecipientImportForm::LookAtFile(const Wish& wish) {
  if (looked_at_.isEmpty()) return;
  read_as_ = Reading();
  if (look_->is_running()) {
    const Wish before = look_again_.value_or(looking_for_);
    look_again_ = Wish{before.is_new_file || wish.is_new_file, before.fills_lists || wish.fills_lists,
                       before.proposes || wish.proposes};
    look_->Cancel();
    return;
  }
  looking_for_ = wish;
  slow_->start(kSlowLook);
  auto reading = read_as_;
  if (reading.encoding.empty()) reading.known = known_;
  reading.most_fields = recipients::kFieldsForHeadings;
  const bool finds_delimiter = wish.is_new_file && !delimiter_is_picked_;
  const bool lists_sheets = sheet_->count() == 0;
  const auto count = kLinesShown + static_cast<std::size_t>(SkippedLines());
  look_->Start([this, finds_delimiter, lists_sheets, count, name = looked_at_,
                reading](const platform::CancelToken& cancel) mutable {
    const std::string codeset = platform::LocaleCodeset();
    const auto file = PathFromQt(name);
    auto delimiter = recipients::FindDelimiterOf(file, reading, codeset, &cancel);
    if (finds_delimiter && delimiter && delimiter->is_needed) reading.delimiter = delimiter->delimiter.character;
    const auto look = std::make_shared<Look>(
        Look{name, recipients::ReadSample(file, reading, codeset, count, 0, &cancel), std::move(delimiter), {}});
    if (lists_sheets && look->sample && look->sample->facts.format == recipients::FileFormat::kSpreadsheet) {
      if (auto sheets = recipients::ListSheets(file, &cancel)) look->sheets = std::move(*sheets);
    }
    return [this, look] { TakeLook(*look); };
  });
}

void RecipientImportForm::TakeLook(const Look& look) {
  if (look_again_) return LookAtFile(*std::exchange(look_again_, {}));
  slow_->stop();
  if (look.file != looked_at_ || task_->is_running()) return;
  if (look.sample) {
    ShowLook(look);
  } else {
    ShowNoLook(look);
  }
  if (look_->is_running() || after_look_ == nullptr) return;
  (this->*std::exchange(after_look_, nullptr))();
}

bool RecipientImportForm::WaitsForLook(void (RecipientImportForm::*then)()) {
  if (!look_->is_running()) return false;
  after_look_ = then;
  return true;
}

// What another reading showed is not what this one would give.
void RecipientImportForm::ForgetSample(const QString& why) {
  sample_.reset();
  proposed_.reset();
  odd_.clear();
  is_quoted_ = false;
  known_.reset();
  table_->Clear(why);
  if (waiting_) mapping_->Offer({});  // they are of that reading, or of another mapping
}

void RecipientImportForm::ShowNoLook(const Look& look) {
  ForgetSample(tr("The file could not be read."));
  if (looking_for_.fills_lists) OfferFields();
  Warn({});
  EnableControls();
  status_->Fail(look.sample.error());
}

void RecipientImportForm::TakeFormat(const Look& look) {
  const auto& facts = sample_->facts;
  if (looking_for_.is_new_file && !delimiter_is_picked_ && look.delimiter && look.delimiter->is_needed) {
    delimiter_->setCurrentIndex(delimiter_->findData(QChar::fromLatin1(look.delimiter->delimiter.character)));
  }
  if (kind_->currentIndex() == 0)
    kind_->setItemText(0, tr("Found: %1").arg(Translated(recipients::NameOf(facts.format))));
  for (const std::string& sheet : look.sheets) sheet_->addItem(ToQt(sheet));
  if (!look.sheets.empty()) sheet_->setCurrentIndex(sheet_->findText(ToQt(facts.sheet)));
  if (Reading().encoding.empty() && !facts.encoding.name.empty()) known_ = facts.encoding;
}

void RecipientImportForm::ShowLook(const Look& look) {
  const std::string encoding = read_as_.encoding;  // another may be typed by now, which is looked for when it is done
  sample_ = *look.sample;
  proposed_ = recipients::ProposeMapping(*sample_, quotes_->isChecked());
  TakeFormat(look);
  EnableControls();
  if (looking_for_.fills_lists) OfferFields();
  SayHowItIsRead(look);
  read_as_ = Reading();  // as the lists say it by now
  read_as_.encoding = encoding;
  ShowSample();
  if (looking_for_.proposes) TakeProposal();
}

void RecipientImportForm::ShowSample() {
  if (!sample_) return;
  table_->Show(*sample_, TakesQuotesOff(), SkippedLines());
  table_->ShowMapping(mapping_->Mapping());
}

void RecipientImportForm::SayHowItIsRead(const Look& look) {
  const auto& facts = sample_->facts;
  QStringList sentences = {tr("Format: %1.").arg(Translated(recipients::NameOf(facts.format)))};
  if (sheet_->count() > 1) sentences << tr("One of %1 sheets.").arg(ToQt(platform::WithThousands(sheet_->count())));
  if (!facts.encoding.name.empty()) {
    sentences << tr("Encoding: %1 (%2).").arg(ToQt(facts.encoding.name), Translated(facts.encoding.how_known));
  }
  if (facts.format == recipients::FileFormat::kDelimited && look.delimiter && look.delimiter->is_needed) {
    sentences << tr("The delimiter seems to be “%1”.").arg(Translated(look.delimiter->delimiter.name));
  }
  if (looking_for_.proposes && !proposed_) sentences << tr("None of the first lines looks like headings.");
  if (columns_.empty() && recipients::HasMoreFields(*sample_))
    sentences << tr("The first 18 fields of a line can be chosen; “Columns” makes others the ones that can.");
  status_->Say(sentences.join(' '));
  odd_.clear();
  is_quoted_ = look.delimiter && look.delimiter->is_quoted;
  if (auto lacking = LackingSheet()) odd_.push_back(std::move(*lacking));
  if (auto lacking = ChooseWaiting()) odd_.push_back(std::move(*lacking));
  for (auto& sentence : recipients::Describe(facts)) odd_.push_back(std::move(sentence));
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

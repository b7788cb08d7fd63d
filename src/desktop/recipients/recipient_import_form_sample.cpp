// The part of the dialog that looks at the file before anything is imported.
#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalBlocker>

#include "desktop/recipients/import_mapping_panel.h"
#include "desktop/recipients/import_sample_table.h"
#include "desktop/recipients/recipient_import_form.h"
#include "desktop/widgets/dropped_files.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/locale_codeset.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kLinesShown = 20;

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

// What was read of another file is no longer there.
void RecipientImportForm::TakeFile(const QString& file) {
  file_->setText(file);
  looked_at_ = file;
  sample_.reset();
  proposed_.reset();
  skip_->setChecked(false);  // the headings were the other file's
  mapping_->Offer({});
  table_->Clear();
  Warn({});
  status_->Say({});
  EnableControls();
  if (!file.isEmpty()) LookAtFile(Purpose::kNewFile);
}

void RecipientImportForm::GetData() {
  if (const auto complaint = recipients::CheckSample(FromQt(file_->text()))) {
    program_.prompts.Warn(complaint->message);
    FocusOn(*complaint->control);
    return;
  }
  looked_at_ = file_->text();
  LookAtFile(Purpose::kFillLists);
}

recipients::ReadingOptions RecipientImportForm::Reading() const {
  recipients::ReadingOptions reading;
  reading.delimiter = delimiter_->currentData().toChar().toLatin1();
  reading.rfc4180 = rfc4180_->isChecked();
  if (encoding_->currentText() != encoding_->itemText(0)) reading.encoding = FromQt(encoding_->currentText());
  return reading;
}

// Of a new file the delimiter is found out first. A look that is under way is not waited for.
void RecipientImportForm::LookAtFile(Purpose purpose) {
  if (looked_at_.isEmpty()) return;
  if (look_->is_running()) {
    look_again_ = std::max(look_again_.value_or(purpose), purpose);
    return;
  }
  look_->Start([this, purpose, name = looked_at_, reading = Reading()](const platform::CancelToken&) mutable {
    const std::string codeset = platform::LocaleCodeset();
    const auto file = PathFromQt(name);
    auto delimiter = recipients::FindDelimiterOf(file, reading, codeset);
    if (purpose == Purpose::kNewFile && delimiter && delimiter->is_needed) {
      reading.delimiter = delimiter->delimiter.character;
    }
    const auto look = std::make_shared<Look>(
        Look{name, recipients::ReadSample(file, reading, codeset, kLinesShown), std::move(delimiter)});
    return [this, look, purpose] { TakeLook(*look, purpose); };
  });
}

void RecipientImportForm::TakeLook(const Look& look, Purpose purpose) {
  if (look.file == looked_at_) ShowLook(look, purpose);
  if (look_again_) LookAtFile(*std::exchange(look_again_, {}));
}

void RecipientImportForm::ShowLook(const Look& look, Purpose purpose) {
  if (!look.sample) {
    status_->Fail(look.sample.error());
    if (purpose == Purpose::kFillLists) OfferFields({});
    return;
  }
  sample_ = *look.sample;
  proposed_ = recipients::ProposeMapping(*sample_);
  if (purpose == Purpose::kNewFile && look.delimiter && look.delimiter->is_needed) {
    delimiter_->setCurrentIndex(delimiter_->findData(QChar::fromLatin1(look.delimiter->delimiter.character)));
  }
  SayHowItIsRead(look);
  EnableControls();
  if (purpose == Purpose::kFillLists) {
    OfferFields(sample_->lines.empty() ? std::vector<std::string_view>() : sample_->lines.front().Fields());
  }
  ShowSample();
}

void RecipientImportForm::OfferFields(const std::vector<std::string_view>& fields) {
  mapping_->Offer(recipients::SampleEntries(fields, quotes_->isChecked()));
}

void RecipientImportForm::ShowSample() {
  if (!sample_) return;
  table_->Show(*sample_, quotes_->isChecked(), skip_->isChecked() && skip_->isEnabled());
  table_->ShowMapping(mapping_->Mapping());
}

void RecipientImportForm::SayHowItIsRead(const Look& look) {
  const auto& facts = sample_->facts;
  QStringList sentences = {tr("Format: %1.").arg(Translated(recipients::NameOf(facts.format)))};
  if (!facts.encoding.name.empty()) {
    sentences << tr("Encoding: %1 (%2).").arg(ToQt(facts.encoding.name), Translated(facts.encoding.how_known));
  }
  if (facts.format == recipients::FileFormat::kDelimited && look.delimiter && look.delimiter->is_needed) {
    sentences << tr("The delimiter seems to be “%1”.").arg(Translated(look.delimiter->delimiter.name));
  }
  status_->Say(sentences.join(' '));
  std::vector<Sentence> odd = recipients::Describe(facts);
  if (look.delimiter && look.delimiter->is_quoted && !quotes_->isChecked() && !rfc4180_->isChecked()) {
    recipients::ImportFindings findings;
    findings.quotes_unread = true;
    for (auto& sentence : recipients::Describe(findings)) odd.push_back(std::move(sentence));
  }
  Warn(odd);
}

// A field of a recipient comes from one field of the line; a field of the line may go into several, of which the list
// above it shows the first.
void RecipientImportForm::TakeHeading(int source, std::size_t field) {
  recipients::ImportMapping mapping = mapping_->Mapping();
  if (!mapping_->Offers(source)) {  // the lists are of another reading, or of none
    OfferFields(sample_->lines.front().Fields());
  }
  std::replace(mapping.source.begin(), mapping.source.end(), source, recipients::kIgnore);
  if (field < mapping.source.size()) mapping.source[field] = source;
  mapping_->Choose(mapping);
}

void RecipientImportForm::Propose() {
  if (!proposed_ || !sample_ || sample_->lines.empty()) return;
  OfferFields(sample_->lines.front().Fields());
  mapping_->Choose(proposed_->mapping);
  skip_->setChecked(proposed_->has_headings);
  if (proposed_->beyond.empty()) return;
  Warn({SayOf(
      static_cast<std::int64_t>(proposed_->beyond.size()),
      "{} field stands behind the eighteenth and cannot be chosen here: “{}”. “quillcast import --header” takes it.",
      "{} fields stand behind the eighteenth and cannot be chosen here, the first is “{}”. “quillcast import "
      "--header” takes them.",
      platform::Printable(proposed_->beyond.front(), 100))});
}

void RecipientImportForm::Warn(const std::vector<Sentence>& sentences) {
  warnings_->SetText(InWords(sentences).join('\n'));
  warnings_->setVisible(!sentences.empty());
}

}  // namespace quillcast::desktop

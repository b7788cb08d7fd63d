// The part of the dialog that imports.
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

#include "desktop/recipients/import_mapping_panel.h"
#include "desktop/recipients/recipient_import_form.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/locale_codeset.h"

namespace quillcast::desktop {
namespace {}  // namespace

recipients::ImportForm RecipientImportForm::Form() const {
  using recipients::ImportMode;
  return {.file = FromQt(file_->text()),
          .has_groups = group_->count() > 0,
          .group = FromQt(group_->currentText()),
          .mode = delimited_->isChecked() ? ImportMode::kDelimited : ImportMode::kHarvest,
          .sample_was_read = mapping_->has_fields(),
          .mapping = mapping_->Mapping()};
}

recipients::ImportRequest RecipientImportForm::Request() const {
  const auto form = Form();
  recipients::ImportRequest request{.file = PathFromQt(file_->text()),
                                    .group = form.group,
                                    .mode = form.mode,
                                    .reading = Reading(),
                                    .quotes = TakesQuotesOff(),
                                    .mapping = form.mapping,
                                    .skip = SkippedLines()};
  if (form.mode == recipients::ImportMode::kHarvest) request.reading.columns.clear();  // it looks at all of them
  return request;
}

void RecipientImportForm::FocusOn(recipients::ImportControl control) {
  switch (control) {
    case recipients::ImportControl::kFile:
      return file_->setFocus();
    case recipients::ImportControl::kGroup:
      return group_->setFocus();
    case recipients::ImportControl::kGetData:
      return get_data_->setFocus();
    case recipients::ImportControl::kMapping:
      return mapping_->list(recipients::kEmail)->setFocus();
  }
}

// A harvest takes addresses from wherever they stand, and needs no look, but at a sheet that it may lack.
void RecipientImportForm::Import() {
  awaited_.DropDeed();
  import_was_given_up_ = false;
  if (!TakeTyped()) return;
  const bool needs_look = delimited_->isChecked() || !sheet_choice_.ToRead().empty();
  if (!needs_look || !look_->is_running() || looked_at_.isEmpty()) return ImportNow();
  awaited_.Do(recipients::AwaitedDeed::kImport, Form());
  status_->Say(tr("Import waits for the look at the file."));
}

void RecipientImportForm::GiveDeedUp() {
  if (awaited_.deed() == recipients::AwaitedDeed::kImport) {
    import_was_given_up_ = true;
    status_->Say(tr("The import that waited was given up."));
  }
  awaited_.DropDeed();
}

void RecipientImportForm::ImportNow() {
  if (const auto complaint = recipients::CheckImport(Form())) {
    program_.prompts.Warn(complaint->message);
    FocusOn(*complaint->control);
    return;
  }
  if (program_.prompts.Consent(recipients::kConsentQuestion)) Start();
}

void RecipientImportForm::Start() {
  look_->Cancel();  // what it would show is no longer asked for
  look_again_ = false;
  awaited_.DropDeed();
  slow_->stop();
  bar_->Count(0, 1);
  Warn({});
  status_->Say(tr("Reading %1…").arg(file_->text()));
  seen_ = std::make_shared<SharedCount>();
  const recipients::ImportPlaces places{program_.folders.Database(), program_.folders.ImportReport(),
                                        platform::LocaleCodeset()};
  task_->Start([this, places, request = Request(), seen = seen_](const platform::CancelToken& cancel) {
    const auto see = [seen](const recipients::ImportProgress& progress) {
      seen->total = progress.bytes_total;
      seen->done = progress.bytes_done;
    };
    const auto outcome =
        std::make_shared<recipients::ImportOutcome>(recipients::ImportRecipients(request, places, cancel, see));
    return [this, outcome] {
      tick_->stop();
      if (outcome->cancelled) {
        said_ = Counted(outcome->counts.added, tr("The import was cancelled; 1 recipient had come in."),
                        tr("The import was cancelled; %1 recipients had come in."));
      }
      give_up_.End([this, outcome] { ShowEnd(*outcome); });
    };
  });
  // Another reading of it was to be shown.
  if (look_->is_running()) ForgetSample(tr("The look at the file ended with the import. “Get Data” takes another."));
  tick_->start(kTick);
  EnableControls();
  progress_->button()->setFocus();
}

void RecipientImportForm::TakeProgress() { bar_->Count(*seen_); }

void RecipientImportForm::ShowEnd(const recipients::ImportOutcome& outcome) {
  EnableControls();
  bar_->Count(outcome.error ? 0 : 1, 1);
  odd_ = recipients::ImportTroubles(outcome);
  is_quoted_ = false;  // told with them where it matters
  Warn(odd_);
  if (outcome.error) {
    status_->Fail(*outcome.error);
  } else {
    status_->Say(tr("Read as %1.")
                     .arg(outcome.facts->encoding.name.empty() ? Translated(recipients::NameOf(outcome.facts->format))
                                                               : ToQt(outcome.facts->encoding.name)));
  }
  import_->setFocus();
  program_.prompts.Inform(recipients::ImportSummary(outcome.counts));
}

void RecipientImportForm::ShowReport() {
  const auto report = program_.folders.ImportReport();
  if (!std::filesystem::exists(report, IgnoreErrors())) return program_.prompts.Warn(recipients::kNoImportReport);
  if (const auto opened = program_.desktop.OpenFile(report); !opened) status_->Fail(opened.error());
}

void RecipientImportForm::reject() {
  if (give_up_.MayClose(recipients::kCancelImportQuestion)) QDialog::reject();
}

}  // namespace quillcast::desktop

#include "desktop/recipients/recipient_export_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

#include "desktop/recipients/field_list.h"
#include "desktop/recipients/group_box.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/file_attributes.h"
#include "platform/locale_codeset.h"
#include "recipients/delimiters.h"
#include "recipients/recipient_store.h"

namespace quillcast::desktop {
namespace {}  // namespace

RecipientExportForm::RecipientExportForm(const profile::Program& program, const QString& group, QWidget* parent)
    : QDialog(parent),
      program_(program),
      task_(new BackgroundTask(this)),
      tick_(new QTimer(this)),
      group_(new QComboBox(this)),
      file_(new QLineEdit(this)),
      browse_(new QPushButton(tr("&Browse…"), this)),
      addresses_(new QRadioButton(tr("E-mail &addresses only"), this)),
      chosen_fields_(new QRadioButton(tr("Se&lected fields, in this order:"), this)),
      fields_(new FieldList(this)),
      delimiter_(new QComboBox(this)),
      rfc4180_(new QCheckBox(tr("&Headings, and quotes where they are needed (RFC 4180)"), this)),
      utf8_(new QCheckBox(tr("UTF-&8, which has every character"), this)),
      inert_(new QCheckBox(tr("&Formulas made harmless: an apostrophe before “=”, “+”, “-” and “@”"), this)),
      status_(new StatusLine(this)),
      progress_(new ProgressPanel("CancelButton", tr("Cancel"), this)),
      bar_(progress_->AddBar("ProgressBar", tr("Recipients written:"))),
      export_(new QPushButton(tr("&Export"), this)),
      give_up_(*this, *task_, *progress_->button(), program.prompts) {
  MakeWindow();
  connect(browse_, &QPushButton::clicked, this, &RecipientExportForm::Browse);
  connect(file_, &QLineEdit::textEdited, this, &RecipientExportForm::SayWhatIsThere);
  connect(chosen_fields_, &QRadioButton::toggled, this, &RecipientExportForm::EnableControls);
  connect(export_, &QPushButton::clicked, this, &RecipientExportForm::Export);
  connect(progress_, &ProgressPanel::Pressed, this, &RecipientExportForm::reject);
  connect(tick_, &QTimer::timeout, this, &RecipientExportForm::TakeProgress);
  if (const auto filled = FillGroupBox(*group_, program, group); !filled) status_->Fail(filled.error());
  EnableControls();
  (group.isEmpty() ? static_cast<QWidget*>(group_) : file_)->setFocus();
}

RecipientExportForm::~RecipientExportForm() = default;

void RecipientExportForm::MakeWindow() {
  setObjectName("RecipientExportForm");
  setWindowTitle(tr("Export Recipients"));
  browse_->setObjectName("BrowseButton");
  export_->setObjectName("ExportButton");
  export_->setDefault(true);
  auto* column = new FormColumn(this);
  FormGrid* what = column->AddGrid();
  group_->setPlaceholderText(tr("Choose a group"));
  what->Add("GroupComboBox", tr("&Group:"), group_);
  what->Add("BrowseTextBox", tr("&To file:"), file_, {browse_});
  what->AddWide("RadioButton1", addresses_);
  what->AddWide("RadioButton2", chosen_fields_);
  addresses_->setChecked(true);
  column->Add(fields_, 1);
  AddFormats(column);
  column->Add(status_);
  progress_->AddBeside(export_);
  column->Add(progress_);
}

void RecipientExportForm::AddFormats(FormColumn* column) {
  for (const recipients::Delimiter& delimiter : recipients::kDelimiters) {
    delimiter_->addItem(Translated(delimiter.name), QChar::fromLatin1(delimiter.character));
  }
  column->AddGrid()->Add("DelimitComboBox", tr("Deli&miter:"), delimiter_);
  FormGrid* formats = column->AddBox(tr("For other programs"));
  formats->AddWide("Rfc4180CheckBox", rfc4180_);
  formats->AddWide("Utf8CheckBox", utf8_);
  formats->AddWide("InertFormulasCheckBox", inert_);
}

// The button that cancels, and closes, is always there.
void RecipientExportForm::EnableControls() {
  const bool is_idle = !task_->is_running();
  for (QWidget* control : std::initializer_list<QWidget*>{group_, file_, browse_, addresses_, chosen_fields_, rfc4180_,
                                                          utf8_, inert_, export_}) {
    control->setEnabled(is_idle);
  }
  fields_->setEnabled(is_idle && chosen_fields_->isChecked());
  delimiter_->setEnabled(is_idle && chosen_fields_->isChecked());
}

void RecipientExportForm::Browse() {
  const auto file = program_.prompts.PickSaveFile(
      {.title = "Export Recipients", .filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*"});
  if (file.empty()) return;
  const auto may_write = platform::MayWriteTo(file, program_.folders.OwnFiles(), program_.prompts);
  if (!may_write) {
    status_->Fail(may_write.error());
  } else if (*may_write) {
    file_->setText(PathToQt(file));
    SayWhatIsThere();
  } else {
    status_->Say(InWords(platform::LeftLocked(file)));
  }
}

// What was said of another path is no longer true either.
void RecipientExportForm::SayWhatIsThere() {
  const auto told = platform::DescribeTarget(PathFromQt(file_->text()), program_.folders.OwnFiles());
  if (!told) return status_->Fail(told.error());
  status_->Say(*told ? InWords(**told) : QString());
}

recipients::ExportForm RecipientExportForm::Form() const {
  using recipients::ExportMode;
  return {.has_groups = group_->count() > 0,
          .group = FromQt(group_->currentText()),
          .file = FromQt(file_->text()),
          .mode = chosen_fields_->isChecked() ? ExportMode::kChosenFields : ExportMode::kAddresses,
          .fields = fields_->Ticked()};
}

recipients::ExportRequest RecipientExportForm::Request() const {
  recipients::ExportRequest request;
  request.group = FromQt(group_->currentText());
  if (chosen_fields_->isChecked()) {
    request.format.fields = fields_->Ticked();
    request.format.delimiter = delimiter_->currentData().toChar().toLatin1();
  }
  request.format.rfc4180 = rfc4180_->isChecked();
  request.format.inert_formulas = inert_->isChecked();
  if (!utf8_->isChecked()) request.format.code_page = platform::LocaleCodeset();
  return request;
}

void RecipientExportForm::Export() {
  const auto complaint = recipients::CheckExport(Form());
  if (!complaint) return Start();
  program_.prompts.Warn(complaint->message);
  switch (*complaint->control) {
    case recipients::ExportControl::kGroup:
      return group_->setFocus();
    case recipients::ExportControl::kFile:
      return file_->setFocus();
    case recipients::ExportControl::kFieldList:
      return fields_->list()->setFocus();
  }
}

void RecipientExportForm::LeaveLocked(const std::filesystem::path& file) {
  status_->Fail(platform::TargetIsLocked(file));
  program_.prompts.Inform(recipients::ExportSummary(0));
}

void RecipientExportForm::Start() {
  if (const auto file = PathFromQt(file_->text()); platform::IsLocked(file)) return LeaveLocked(file);
  bar_->Count(0, 0);
  status_->Say(tr("Writing %1…").arg(file_->text()));
  seen_ = std::make_shared<SharedCount>();
  task_->Start([this, store = program_.folders.Database(), own = program_.folders.OwnFiles(), request = Request(),
                file = PathFromQt(file_->text()), seen = seen_](const platform::CancelToken& cancel) {
    const auto see = [seen](std::int64_t done, std::int64_t total) {
      seen->total = static_cast<std::uint64_t>(total);
      seen->done = static_cast<std::uint64_t>(done);
    };
    const auto outcome = recipients::ExportToFile(store, request, file, own, cancel, see);
    return [this, outcome, file] {
      tick_->stop();
      KeepSaid(outcome, file);
      give_up_.End([this, outcome] { ShowEnd(outcome); });
    };
  });
  tick_->start(kTick);
  EnableControls();
  progress_->button()->setFocus();
}

void RecipientExportForm::TakeProgress() { bar_->Count(*seen_); }

void RecipientExportForm::KeepSaid(const recipients::ExportOutcome& outcome, const std::filesystem::path& file) {
  if (const auto cut = recipients::DescribeCancelled(outcome, file)) {
    said_ = InWords(*cut);
  } else {
    said_ = outcome.error ? InWords(*outcome.error) : ToQt(recipients::ExportSummary(outcome.written));
  }
}

void RecipientExportForm::ShowEnd(const recipients::ExportOutcome& outcome) {
  said_.clear();
  EnableControls();
  bar_->Count(outcome.error ? 0 : 1, 1);
  if (outcome.error) {
    status_->Fail(*outcome.error);
  } else {
    const QString troubles = InWords(recipients::ExportTroubles(outcome)).join(' ');
    status_->Say(troubles, troubles.isEmpty() ? NoteKind::kInformation : NoteKind::kWarning);
  }
  export_->setFocus();
  program_.prompts.Inform(recipients::ExportSummary(outcome.written));
}

void RecipientExportForm::reject() {
  if (give_up_.MayClose(recipients::kCancelExportQuestion)) QDialog::reject();
}

}  // namespace quillcast::desktop

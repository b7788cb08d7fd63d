#include "desktop/run/extra_form3.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <utility>

#include "desktop/run/ask_prepared.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/file_attributes.h"

namespace quillcast::desktop {

ExtraForm3::ExtraForm3(const profile::Program& program, document::MessageDocument message, QWidget* parent)
    : QDialog(parent),
      program_(program),
      message_(std::move(message)),
      task_(new BackgroundTask(this)),
      file_(new QLineEdit(this)),
      choose_(new QPushButton(tr("C&hoose…"), this)),
      header_(new QCheckBox(tr("&Keep it as a draft, which mail readers open to be written on"), this)),
      status_(new StatusLine(this)),
      export_(new QPushButton(tr("&Export"), this)),
      cancel_(new QPushButton(tr("Cancel"), this)) {
  MakeWindow();
  connect(choose_, &QPushButton::clicked, this, &ExtraForm3::Choose);
  connect(file_, &QLineEdit::textEdited, this, &ExtraForm3::SayWhatIsThere);
  connect(export_, &QPushButton::clicked, this, &ExtraForm3::Export);
  connect(cancel_, &QPushButton::clicked, this, &ExtraForm3::reject);
  file_->setFocus();
}

void ExtraForm3::MakeWindow() {
  setObjectName("ExtraForm3");
  setWindowTitle(tr("Export Message"));
  resize(560, 0);
  choose_->setObjectName("ChooseButton");
  export_->setObjectName("ExportButton");
  export_->setDefault(true);
  cancel_->setObjectName("CancelButton");
  auto* column = new FormColumn(this);
  FormGrid* grid = column->AddGrid();
  file_->setPlaceholderText(tr("The file that the message goes into, without being sent"));
  grid->Add("FilePathTextBox", tr("To &file:"), file_, {choose_});
  grid->AddPlain("HeaderCheckBox", header_);
  column->Add(status_);
  column->AddLine({nullptr, export_, cancel_});
}

// The button that cancels, and closes, is always there.
void ExtraForm3::EnableControls() {
  for (QWidget* control : std::initializer_list<QWidget*>{file_, choose_, header_, export_})
    control->setEnabled(!task_->is_running());
}

void ExtraForm3::Choose() {
  const auto file = program_.prompts.PickSaveFile({.title = "Export Mail Message",
                                                   .filter = "Email Files (*.eml)|*.eml|All Files (*.*)|*.*",
                                                   .ask_before_overwriting = true});
  if (file.empty()) return;
  const auto may_write = platform::MayWriteTo(file, program_.folders.OwnFiles(), program_.prompts);
  if (!may_write) return status_->Fail(may_write.error());
  if (!*may_write) return status_->Say(InWords(platform::LeftLocked(file)));
  file_->setText(PathToQt(file));
  SayWhatIsThere();
}

// What was said of another path is no longer true either.
void ExtraForm3::SayWhatIsThere() {
  const auto told = platform::DescribeTarget(Target().file, program_.folders.OwnFiles());
  if (!told) return status_->Fail(told.error());
  status_->Say(*told ? InWords(**told) : QString());
}

run::ExportTarget ExtraForm3::Target() const { return {PathFromQt(file_->text()), header_->isChecked()}; }

void ExtraForm3::Export() {
  const run::ExportTarget target = Target();
  if (const auto complaint = run::CheckMessageExport(target)) {
    program_.prompts.Warn(complaint->message);
    return file_->setFocus();
  }
  if (const auto other = platform::CheckIsNotOwn(target.file, program_.folders.OwnFiles()); !other) {
    status_->Fail(other.error());
    return file_->setFocus();
  }
  if (const auto other = document::CheckIsNoSource(target.file, message_); !other) {
    status_->Fail(other.error());
    return file_->setFocus();
  }
  status_->Say(tr("Writing %1…").arg(file_->text()));
  AskPrepared(
      task_, program_, message_, run::ChosenGroup(), [target](run::PreparedRun& run) { return run.Export(target); },
      [this](const Result<run::Exported>& exported) { ShowEnd(exported); });
  EnableControls();
  cancel_->setFocus();
}

void ExtraForm3::ShowEnd(const Result<run::Exported>& exported) {
  EnableControls();
  export_->setFocus();
  if (!exported) {
    status_->Fail(exported.error());
    if (exported.error().failure == Failure::kTryAgain) return;  // it was given up, and has not been completed
  } else {
    status_->Say(
        (InWords(exported->notes) << tr("The message is in %1. Nothing was sent.").arg(file_->text())).join(' '));
  }
  program_.prompts.Inform("Export process has been completed.");
}

void ExtraForm3::reject() {
  if (task_->is_running()) return task_->Cancel();
  QDialog::reject();
}

}  // namespace quillcast::desktop

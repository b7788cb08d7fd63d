#include "desktop/mail_file/extra_form2.h"

#include <QLineEdit>
#include <QPushButton>
#include <memory>
#include <utility>

#include "desktop/mail_file/message_file_field.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "mail_file/load_settings.h"

namespace quillcast::desktop {

ExtraForm2::ExtraForm2(const profile::Program& program, const std::filesystem::path& file, Take take, QWidget* parent)
    : QDialog(parent),
      program_(program),
      take_(std::move(take)),
      task_(new BackgroundTask(this)),
      file_(new MessageFileField(program.prompts, "Import Mail Message", this)),
      status_(new StatusLine(this)),
      import_(new QPushButton(tr("&Import"), this)),
      cancel_(new QPushButton(tr("Cancel"), this)) {
  MakeWindow();
  connect(import_, &QPushButton::clicked, this, &ExtraForm2::Import);
  connect(cancel_, &QPushButton::clicked, this, &ExtraForm2::reject);
  file_->box()->setText(PathToQt(file));
  file_->box()->setFocus();
}

void ExtraForm2::MakeWindow() {
  setObjectName("ExtraForm2");
  setWindowTitle(tr("Import Message"));
  resize(560, 0);
  import_->setObjectName("ImportButton");
  import_->setDefault(true);
  cancel_->setObjectName("CancelButton");
  file_->box()->setPlaceholderText(tr("The message file whose body you want to go on with"));
  auto* column = new FormColumn(this);
  file_->AddTo(column->AddGrid());
  column->Add(status_);
  column->AddLine({nullptr, import_, cancel_});
}

// The button that cancels, and closes, is always there.
void ExtraForm2::EnableControls() {
  file_->SetEnabled(!task_->is_running());
  import_->setEnabled(!task_->is_running());
}

Result<ExtraForm2::Outcome> ExtraForm2::Load(const profile::Program& program, const std::filesystem::path& file,
                                             const platform::CancelToken& cancel) {
  const auto mode = mail_file::LoadModeOf(program.settings);
  if (!mode) return mode.error();
  const auto loading = mail_file::Load(file, {*mode, &cancel});
  if (!loading) return loading.error();
  Outcome outcome{std::string(mail_file::LoadWarning(*loading)), {}, mail_file::WhatWasWrong(*loading)};
  if (loading->message) {
    outcome.body = mail_file::ImportBody(*loading->message, program.folders.ImportBody(), program.folders.temporary,
                                         program.clock, &cancel);
  }
  return outcome;
}

void ExtraForm2::Import() {
  const auto file = file_->path();
  if (file.empty()) {
    program_.prompts.Warn(mail_file::kNoMessageFile);
    return file_->box()->setFocus();
  }
  status_->Say(tr("Reading %1…").arg(PathToQt(file)));
  task_->Start([this, &program = program_, file](const platform::CancelToken& cancel) -> std::function<void()> {
    const auto outcome = std::make_shared<const Result<Outcome>>(Load(program, file, cancel));
    return [this, outcome] { ShowEnd(*outcome); };
  });
  EnableControls();
  cancel_->setFocus();
}

void ExtraForm2::ShowEnd(const Result<Outcome>& outcome) {
  EnableControls();
  import_->setFocus();
  status_->Say({});
  if (!outcome) {
    status_->Fail(outcome.error());
    if (outcome.error().failure == Failure::kTryAgain) return;  // it was given up, and has not been completed
  } else {
    if (!outcome->warning.empty()) program_.prompts.Warn(outcome->warning);
    if (outcome->body) TakeBody(*outcome->body, InWords(outcome->wrong));
    if (!outcome->body) {
      const QString stays = tr("Nothing could be read, so the message stays as it is.");
      status_->Say((InWords(outcome->wrong) << stays).join(' '), NoteKind::kFailure);
    }
  }
  program_.prompts.Inform("Import process has been completed.");
}

void ExtraForm2::TakeBody(const Result<mail_file::ImportedBody>& body, QStringList wrong) {
  if (!body) return status_->Fail(body.error());
  const auto is_kept = take_(*body);
  if (!is_kept) return status_->Fail(is_kept.error());
  if (!body->failures.empty()) return status_->Fail(body->failures.front());
  wrong << tr("The body is in the window.");
  if (*is_kept) wrong << tr("What was there is kept: Restore, above the message, brings it back.");
  status_->Say(wrong.join(' '));
}

void ExtraForm2::reject() {
  if (task_->is_running()) return task_->Cancel();
  QDialog::reject();
}

}  // namespace quillcast::desktop

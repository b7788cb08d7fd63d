#include "desktop/mail_file/extra_form4.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <algorithm>

#include "desktop/mail_file/message_file_field.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "mail_file/load_settings.h"
#include "platform/locale_codeset.h"

namespace quillcast::desktop {
namespace {

using mail_file::BodyFormat;

constexpr const char* kTitle = "Extract Mail Message";

}  // namespace

struct ExtraForm4::End {
  std::string warning;  // of the load
  std::vector<Sentence> news;
  std::vector<Sentence> troubles;  // what was passed over, and those of the load and the extraction
  mail_file::ExtractionOutcome outcome;
};

ExtraForm4::ExtraForm4(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      task_(new BackgroundTask(this)),
      tick_(new QTimer(this)),
      file_(new MessageFileField(program.prompts, kTitle, this)),
      body_parts_(new QCheckBox(tr("The &texts of the body too"), this)),
      formats_{new QRadioButton(tr("Te&xt"), this), new QRadioButton(tr("&HTML"), this),
               new QRadioButton(tr("&RTF"), this), new QRadioButton(tr("XM&L"), this)},
      status_(new StatusLine(this)),
      progress_(new ProgressPanel("CancelButton", tr("Cancel"), this)),
      bar_(progress_->AddBar("ProgressBar", tr("Parts written:"))),
      extract_(new QPushButton(tr("&Extract"), this)) {
  MakeWindow();
  file_->AskOfChosen([this](const std::filesystem::path& file) { return MayBeRead(file); });
  connect(extract_, &QPushButton::clicked, this, &ExtraForm4::Extract);
  connect(progress_, &ProgressPanel::Pressed, this, &ExtraForm4::reject);
  connect(tick_, &QTimer::timeout, this, [this] { bar_->Count(*seen_); });
  EnableControls();
  file_->box()->setFocus();
}

ExtraForm4::~ExtraForm4() = default;

void ExtraForm4::MakeWindow() {
  setObjectName("ExtraForm4");
  setWindowTitle(tr("Extract from Messages"));
  resize(560, 0);
  extract_->setObjectName("ExtractButton");
  extract_->setDefault(true);
  auto* column = new FormColumn(this);
  file_->AddTo(column->AddGrid());
  FormGrid* places = column->AddBox(tr("Where to; what has no place is left out"));
  outputs_[0] = AddOutput(places, 1, tr("&Parts into folder:"), &ExtraForm4::ChooseFolder);
  places->AddPlain("BodyPartCheckBox", body_parts_);
  outputs_[1] = AddOutput(places, 2, tr("B&ody into file:"), &ExtraForm4::ChooseBody);
  AddFormats(places);
  outputs_[2] = AddOutput(places, 3, tr("Body with pictures into &folder:"), &ExtraForm4::ChooseFolder);
  outputs_[3] = AddOutput(places, 4, tr("Re&cipients into file:"), &ExtraForm4::ChooseText);
  outputs_[4] = AddOutput(places, 5, tr("&Stamps into file:"), &ExtraForm4::ChooseText);
  column->Add(status_);
  progress_->AddBeside(extract_);
  column->Add(progress_);
}

void ExtraForm4::AddFormats(FormGrid* grid) {
  constexpr std::array kNames = {"TEXTButton", "HTMLButton", "RTFButton", "XMLRadioButton"};
  auto* line = new QWidget(this);
  auto* side_by_side = new QHBoxLayout(line);
  side_by_side->setContentsMargins(0, 0, 0, 0);
  for (std::size_t i = 0; i < formats_.size(); ++i) {
    formats_.at(i)->setObjectName(kNames.at(i));
    side_by_side->addWidget(formats_.at(i));
    connect(formats_.at(i), &QRadioButton::clicked, this, &ExtraForm4::SayWhatIsThere);
  }
  side_by_side->addStretch();
  formats_[0]->setChecked(true);
  grid->AddPlain("FormatLine", line);
}

QLineEdit* ExtraForm4::AddOutput(FormGrid* grid, int number, const QString& label,
                                 void (ExtraForm4::*choose)(QLineEdit*)) {
  auto* box = new QLineEdit(this);
  auto* button = new QPushButton(tr("Browse…"), this);
  button->setObjectName(QStringLiteral("ExtractButton%1").arg(number));
  grid->Add(QStringLiteral("ExtractPath%1").arg(number), label, box, {button});
  connect(button, &QPushButton::clicked, this, [this, box, choose] { (this->*choose)(box); });
  connect(box, &QLineEdit::textEdited, this, &ExtraForm4::SayWhatIsThere);
  return box;
}

void ExtraForm4::ChooseFolder(QLineEdit* box) {
  const auto folder = program_.prompts.PickFolder(kTitle);
  if (folder.empty()) return program_.prompts.Warn(mail_file::kNoDestination);
  box->setText(PathToQt(folder));
}

void ExtraForm4::ChooseBody(QLineEdit* box) { ChooseFile(box, mail_file::FilterOf(Format())); }
void ExtraForm4::ChooseText(QLineEdit* box) { ChooseFile(box, mail_file::FilterOf(BodyFormat::kText)); }

void ExtraForm4::ChooseFile(QLineEdit* box, std::string_view filter) {
  const auto file = program_.prompts.PickSaveFile({.title = kTitle, .filter = std::string(filter)});
  if (file.empty()) return;
  const auto may_write = platform::MayWriteTo(file, program_.folders.OwnFiles(), program_.prompts);
  if (!may_write) return status_->Fail(may_write.error());
  if (!*may_write) return status_->Say(InWords(platform::LeftLocked(file)));
  box->setText(PathToQt(file));
  SayWhatIsThere();
}

// What is written over, and in another form than its name says.
void ExtraForm4::SayWhatIsThere() {
  std::vector<Sentence> notes;
  for (const QLineEdit* box : {outputs_[1], outputs_[3], outputs_[4]}) {
    const auto file = PathFromQt(box->text());
    if (file.empty()) continue;
    const auto there = platform::DescribeTarget(file, program_.folders.OwnFiles());
    if (!there) return status_->Fail(there.error());
    if (*there) notes.push_back(**there);
  }
  if (const auto note = mail_file::FormNote(PathFromQt(outputs_[1]->text()), Format())) notes.push_back(*note);
  status_->Say(InWords(notes).join(' '));
}

// Reading needs no permission to write: a file that could not be unlocked is taken all the same.
bool ExtraForm4::MayBeRead(const std::filesystem::path& file) {
  status_->Say({});
  const auto unlocked = platform::AskToUnlock(file, program_.prompts);
  if (!unlocked) status_->Fail(unlocked.error());
  if (unlocked && !*unlocked) status_->Say(InWords(platform::LeftLocked(file)));
  return !unlocked || *unlocked;
}

BodyFormat ExtraForm4::Format() const {
  auto format = BodyFormat::kText;
  for (std::size_t i = 0; i < formats_.size(); ++i) {
    if (formats_.at(i)->isChecked()) format = static_cast<BodyFormat>(i);
  }
  return format;
}

mail_file::ExtractionRequest ExtraForm4::Request() const {
  return {.file = FromQt(file_->box()->text()),
          .parts_folder = FromQt(outputs_[0]->text()),
          .with_body_parts = body_parts_->isChecked(),
          .body_file = FromQt(outputs_[1]->text()),
          .format = Format(),
          .second_folder = FromQt(outputs_[2]->text()),
          .recipients_file = FromQt(outputs_[3]->text()),
          .stamps_file = FromQt(outputs_[4]->text()),
          .code_page = platform::LocaleCodeset()};
}

void ExtraForm4::Extract() {
  const auto request = Request();
  const auto complaint = mail_file::CheckExtraction(request);
  if (!complaint) return Start(request);
  program_.prompts.Warn(complaint->message);
  if (complaint->control) file_->box()->setFocus();
}

// What was passed over is told in the status line once all is done.
void ExtraForm4::Start(const mail_file::ExtractionRequest& request) {
  std::vector<Sentence> passed_over;
  if (!working_folder_) {
    auto made = mail_file::WorkingFolder::Make(program_.folders.temporary, program_.clock);
    if (made) working_folder_.emplace(*std::move(made));
    if (!made) passed_over.push_back(AsSentence(made.error()));
  }
  const auto mode = mail_file::LoadModeOf(program_.settings);
  if (!mode) passed_over.push_back(AsSentence(mode.error()));
  bar_->Count(0, 1);
  status_->Say(tr("Reading %1…").arg(file_->box()->text()));
  seen_ = std::make_shared<SharedCount>();
  task_->Start([this, request, mode = mode ? *mode : mail_file::LoadMode::kPlain, passed_over,
                own = program_.folders.OwnFiles(), seen = seen_](const auto& cancel) {
    End end = Run(request, mode, own, cancel, *seen);
    end.troubles.insert(end.troubles.begin(), passed_over.begin(), passed_over.end());
    return [this, end] { ShowEnd(end); };
  });
  tick_->start(kTick);
  EnableControls();
  progress_->button()->setFocus();
}

ExtraForm4::End ExtraForm4::Run(const mail_file::ExtractionRequest& request, mail_file::LoadMode mode,
                                const platform::OwnFiles& own, const platform::CancelToken& cancel, SharedCount& seen) {
  End end;
  const auto loading = mail_file::Load(request.file, {mode, &cancel});
  if (!loading) {
    end.outcome.is_cancelled = true;
    return end;
  }
  end.warning = mail_file::LoadWarning(*loading);
  end.troubles = mail_file::WhatWasWrong(*loading);
  if (!loading->message) return end;
  mail_file::ChosenFolders folders(own);
  end.outcome = mail_file::Extract(*loading->message, request, folders, cancel, [&seen](auto done, auto total) {
    seen.total = total;
    seen.done = done;
  });
  end.news = mail_file::ExtractionNews(request, end.outcome);
  const auto troubles = mail_file::ExtractionTroubles(end.outcome, request.code_page);
  end.troubles.insert(end.troubles.end(), troubles.begin(), troubles.end());
  return end;
}

void ExtraForm4::ShowEnd(const End& end) {
  tick_->stop();
  EnableControls();
  extract_->setFocus();
  if (closes_at_end_) return QDialog::reject();
  bar_->Count(end.outcome.parts.size(), std::max<std::size_t>(end.outcome.wanted, 1));
  status_->Say((InWords(end.news) + InWords(end.troubles)).join(' '),
               end.troubles.empty() ? NoteKind::kInformation : NoteKind::kWarning);
  if (!end.warning.empty()) program_.prompts.Warn(end.warning);
  program_.prompts.Inform(mail_file::kExtracted);
}

// The button that cancels, and closes, is always there.
void ExtraForm4::EnableControls() {
  const bool is_idle = !task_->is_running();
  file_->SetEnabled(is_idle);
  for (QWidget* control : findChildren<QWidget*>()) {
    const bool is_choice =
        qobject_cast<QLineEdit*>(control) != nullptr || qobject_cast<QAbstractButton*>(control) != nullptr;
    if (is_choice && control != progress_->button()) control->setEnabled(is_idle);
  }
}

void ExtraForm4::reject() {
  if (!task_->is_running()) return QDialog::reject();
  closes_at_end_ = true;
  progress_->button()->setEnabled(false);
  task_->Cancel();
}

}  // namespace quillcast::desktop

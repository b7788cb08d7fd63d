#include "desktop/mail_file/extra_form1.h"

#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <utility>

#include "desktop/mail_file/foreign_page.h"
#include "desktop/mail_file/message_file_field.h"
#include "desktop/widgets/background_task.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "mail_file/load_settings.h"
#include "platform/file_attributes.h"

namespace quillcast::desktop {
namespace {

constexpr int kMarginWidth = 60;  // pixels

QLineEdit* MakeMargin(const std::string& text, QWidget* parent) {
  auto* box = new QLineEdit(ToQt(text), parent);
  box->setValidator(new DigitsFilter(box));
  box->setMaximumWidth(kMarginWidth);
  return box;
}

}  // namespace

ExtraForm1::ExtraForm1(const profile::Program& program, const std::filesystem::path& file, QWidget* parent)
    : QDialog(parent),
      choose_printer([this](QPrinter& printer) {
        QPrintDialog dialog(&printer, this);
        dialog.setObjectName("PrintDialog");
        dialog.setWindowTitle(tr("Print"));
        return dialog.exec() == QDialog::Accepted;
      }),
      program_(program),
      task_(new BackgroundTask(this)),
      tick_(new QTimer(this)),
      seen_(std::make_shared<SharedCount>()),
      file_(new MessageFileField(program.prompts, "Print Mail Message", this)),
      left_(MakeMargin(mail_file::PrintForm().left, this)),
      top_(MakeMargin(mail_file::PrintForm().top, this)),
      right_(MakeMargin(mail_file::PrintForm().right, this)),
      formats_{new QRadioButton(tr("&Text"), this), new QRadioButton(tr("&HTML"), this),
               new QRadioButton(tr("RT&F"), this), new QRadioButton(tr("&XML source"), this)},
      heading_(new QLineEdit(this)),
      center_(new QCheckBox(tr("&Centred"), this)),
      bold_(new QCheckBox(tr("B&old"), this)),
      underline_(new QCheckBox(tr("&Underlined"), this)),
      status_(new StatusLine(this)),
      preview_(new QPushButton(tr("Pre&view…"), this)),
      print_(new QPushButton(tr("&Print…"), this)),
      progress_(new ProgressPanel("CancelButton", tr("Cancel"), this)),
      bar_(progress_->AddBar("ProgressBar", tr("Pages printed:"))) {
  MakeWindow();
  connect(preview_, &QPushButton::clicked, this, [this] { Begin(&ExtraForm1::ShowPages, mail_file::kMostPreviewed); });
  connect(print_, &QPushButton::clicked, this, [this] { Begin(&ExtraForm1::Print, mail_file::kMostPrinted); });
  connect(progress_, &ProgressPanel::Pressed, this, &ExtraForm1::reject);
  connect(tick_, &QTimer::timeout, this, [this] { bar_->Count(*seen_); });
  file_->box()->setText(PathToQt(file));
  file_->box()->setFocus();
}

void ExtraForm1::MakeWindow() {
  setObjectName("ExtraForm1");
  setWindowTitle(tr("Print Messages"));
  resize(560, 0);
  preview_->setObjectName("PreviewButton");
  print_->setObjectName("PrintButton");
  print_->setDefault(true);
  file_->box()->setPlaceholderText(tr("The message file to print"));
  auto* column = new FormColumn(this);
  file_->AddTo(column->AddGrid());
  FormGrid* margins = column->AddBox(tr("Margins (millimetres)"));
  margins->Add("LeftMarginTextBox", tr("&Left:"), left_);
  margins->Add("TopMarginTextBox", tr("Top, an&d bottom:"), top_);
  margins->Add("RightMarginTextBox", tr("&Right:"), right_);
  FormGrid* body = column->AddBox(tr("Body"));
  for (const auto& [format, name] : {std::pair(0, "TEXTRadioButton"), std::pair(1, "HTMLRadioButton"),
                                     std::pair(2, "RTFRadioButton"), std::pair(3, "XMLRadioButton")})
    body->AddWide(name, formats_[static_cast<std::size_t>(format)]);
  for (QRadioButton* format : formats_) format->setFocusPolicy(Qt::ClickFocus);
  formats_[1]->setChecked(true);
  formats_[1]->setFocusPolicy(Qt::StrongFocus);  // Tab comes to it; once it has, the toolkit keeps that true
  AddHeading(column);
  column->Add(status_);
  progress_->AddBeside(preview_);
  progress_->AddBeside(print_);
  column->Add(progress_);
}

void ExtraForm1::AddHeading(FormColumn* column) {
  FormGrid* heading = column->AddBox(tr("Heading"));
  heading->Add("HeaderTextBox", tr("Li&ne above each page:"), heading_);
  heading->AddPlain("CenterCheckBox", center_);
  heading->AddPlain("BoldCheckBox", bold_);
  heading->AddPlain("UnderlineCheckBox", underline_);
}

// The button that cancels, and closes, is always there.
void ExtraForm1::EnableControls() {
  const bool is_idle = !task_->is_running();
  file_->SetEnabled(is_idle);
  for (QWidget* control :
       std::initializer_list<QWidget*>{left_, top_, right_, heading_, center_, bold_, underline_, preview_, print_})
    control->setEnabled(is_idle);
  for (QRadioButton* format : formats_) format->setEnabled(is_idle);
}

mail_file::PrintForm ExtraForm1::Form() const {
  mail_file::PrintForm form;
  form.file = FromQt(file_->box()->text());
  form.left = FromQt(left_->text());
  form.top = FromQt(top_->text());
  form.right = FromQt(right_->text());
  for (std::size_t i = 0; i < formats_.size(); ++i) {
    if (formats_[i]->isChecked()) form.format = static_cast<mail_file::BodyFormat>(i);
  }
  form.heading = FromQt(heading_->text());
  form.is_centred = center_->isChecked();
  form.is_bold = bold_->isChecked();
  form.is_underlined = underline_->isChecked();
  return form;
}

void ExtraForm1::Begin(Use use, std::size_t most) {
  const mail_file::PrintForm form = Form();
  status_->Say({});
  if (const auto complaint = mail_file::CheckPrint(form)) {
    program_.prompts.Warn(complaint->message);
    const std::array<QWidget*, 4> boxes = {file_->box(), left_, top_, right_};  // by PrintControl
    return boxes.at(static_cast<std::size_t>(*complaint->control))->setFocus();
  }
  bar_->Count(0, 1);
  status_->Say(tr("Reading %1…").arg(file_->box()->text()));
  task_->Start([this, &program = program_, form, use, most](const auto& cancel) -> std::function<void()> {
    const auto reading = std::make_shared<Reading>(Read(program, form, most, cancel));
    return [this, reading, use] { Take(reading, use); };
  });
  EnableControls();
  progress_->button()->setFocus();
}

ExtraForm1::Reading ExtraForm1::Read(const profile::Program& program, const mail_file::PrintForm& form,
                                     std::size_t most, const platform::CancelToken& cancel) {
  const auto mode = mail_file::LoadModeOf(program.settings);
  if (!mode) return {{}, {}, mode.error()};
  const auto loading = mail_file::Load(form.file, {*mode, &cancel});
  if (!loading) return {{}, {}, loading.error()};
  Reading reading{std::string(mail_file::LoadWarning(*loading)), {}, {}, mail_file::WhatWasWrong(*loading)};
  reading.is_loaded = loading->message.has_value();
  if (!reading.is_loaded) return reading;
  auto pages = ReadPages(*loading->message, form, most, cancel);
  if (!pages) reading.error = pages.error();
  if (pages) reading.pages = *std::move(pages);
  return reading;
}

void ExtraForm1::Take(const std::shared_ptr<Reading>& reading, Use use) {
  EnableControls();
  print_->setFocus();
  status_->Say(InWords(reading->wrong).join(' '), NoteKind::kWarning);
  if (!reading->warning.empty()) program_.prompts.Warn(reading->warning);
  if (reading->error) status_->Fail(*reading->error);
  if (reading->pages) return (this->*use)(std::make_shared<const MessagePages>(std::move(*reading->pages)));
  const bool was_given_up = reading->error && reading->error->failure == Failure::kTryAgain;
  if (!was_given_up && !reading->is_loaded) program_.prompts.Warn(mail_file::kNoMessageHandle);
}

void ExtraForm1::Print(const std::shared_ptr<const MessagePages>& pages) {
  const auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
  if (!choose_printer(*printer)) return ShowEnd({mail_file::PrintCode::kCancelled, 0, {}});
  if (const auto left = LeftAlone(*printer, *pages)) return ShowEnd(*left);
  into_ = printer->outputFileName();
  status_->Say(tr("Printing…"));
  seen_ = std::make_shared<SharedCount>();
  task_->Start([this, printer, pages, own = program_.folders.OwnFiles(), seen = seen_](const auto& cancel) {
    const auto printed = PrintMessageFile(*printer, *pages, own, {cancel, [seen](int page, int of) {
                                                                    seen->total = static_cast<std::uint64_t>(of);
                                                                    seen->done = static_cast<std::uint64_t>(page);
                                                                  }});
    return [this, printed] { ShowEnd(printed); };
  });
  tick_->start(kTick);
  EnableControls();
  progress_->button()->setFocus();
}

// How it ends where the printer's file, if it has one, may not be written.
std::optional<mail_file::PrintedMessage> ExtraForm1::LeftAlone(const QPrinter& printer,
                                                               const MessagePages& pages) const {
  if (printer.outputFormat() != QPrinter::PdfFormat || printer.outputFileName().isEmpty()) return {};
  const auto file = PathFromQt(printer.outputFileName());
  const auto other = mail_file::CheckIsNotMessage(file, pages.form.file);
  const auto may_write =
      other ? platform::MayWriteTo(file, program_.folders.OwnFiles(), program_.prompts) : Result<bool>(other.error());
  if (!may_write) return mail_file::PrintedMessage{mail_file::PrintCode::kNotBegun, 0, may_write.error()};
  if (*may_write) return {};
  return mail_file::PrintedMessage{mail_file::PrintCode::kCancelled, 0,
                                   Error{Failure::kNotPermitted, platform::LeftLocked(file)}};
}

void ExtraForm1::ShowEnd(const mail_file::PrintedMessage& printed) {
  tick_->stop();
  bar_->Count(printed.code == mail_file::PrintCode::kPrinted ? 1 : 0, 1);
  EnableControls();
  print_->setFocus();
  if (printed.code == mail_file::PrintCode::kPrinted) {
    SayPrinted(printed);
  } else {
    status_->Say(InWords(mail_file::WhyNotPrinted(printed)), NoteKind::kFailure);
    program_.prompts.Warn(mail_file::TextOf(printed.code));
  }
  program_.prompts.Inform("Print process has been completed.");
}

void ExtraForm1::SayPrinted(const mail_file::PrintedMessage& printed) {
  const QString pages = into_.isEmpty() ? tr("Pages printed: %1.").arg(printed.pages)
                                        : tr("Pages printed: %1, into %2.").arg(printed.pages).arg(into_);
  const QStringList left_out = InWords(printed.left_out);
  status_->Say((QStringList(pages) + left_out).join(' '),
               left_out.isEmpty() ? NoteKind::kInformation : NoteKind::kWarning);
}

void ExtraForm1::ShowPages(const std::shared_ptr<const MessagePages>& pages) {
  QPrinter printer(QPrinter::HighResolution);
  QPrintPreviewDialog dialog(&printer, this);
  dialog.setObjectName("PrintPreviewDialog");
  dialog.setWindowTitle(tr("Pages"));
  connect(&dialog, &QPrintPreviewDialog::paintRequested, this,
          [pages](QPrinter* shown) { DrawMessage(*shown, *pages, {platform::CancelToken()}); });
  // The dialog's own would print the beginning that it shows, and tell of nothing that goes wrong.
  bool is_to_be_printed = false;
  for (QAction* action : dialog.findChildren<QAction*>()) {
    if (action->text() != QPrintPreviewDialog::tr("Print")) continue;
    action->disconnect(&dialog);
    connect(action, &QAction::triggered, &dialog, [&] { is_to_be_printed = true, dialog.accept(); });
  }
  dialog.exec();
  if (is_to_be_printed) Begin(&ExtraForm1::Print, mail_file::kMostPrinted);
}

void ExtraForm1::reject() {
  if (task_->is_running()) return task_->Cancel();
  QDialog::reject();
}

}  // namespace quillcast::desktop

#include "desktop/support/support_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/read_first.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "profile/main_window_contents.h"
#include "run/run_place.h"
#include "support/request_contents.h"
#include "support/request_message.h"
#include "support/support_contact.h"

namespace quillcast::desktop {
namespace {

constexpr int kLeastDescription = 90;  // pixels

profile::PixelSize PixelsOf(const QScreen& screen) {
  const qreal ratio = screen.devicePixelRatio();
  return {static_cast<int>(std::ceil(screen.size().width() * ratio)),
          static_cast<int>(std::ceil(screen.size().height() * ratio))};
}

// Shown in the user's language; what is sent is the entry's data.
template <typename Texts>
void AddItems(QComboBox* box, const Texts& texts) {
  for (const std::string_view text : texts) box->addItem(Translated(text), ToQt(text));
}

void Choose(QComboBox* box, const QString& text) { box->setCurrentIndex(std::max(box->findData(text), 0)); }

}  // namespace

SupportForm::SupportForm(const profile::Program& program, const platform::Environment& environment,
                         const QString& priority, Server server, QWidget* parent)
    : QDialog(parent),
      program_(program),
      environment_(environment),
      route_(program.settings, server, account::ShownRoute::Sender::kItsOwn),
      facts_(support::ReadSystemFacts()),
      look_(new BackgroundTask(this)),
      task_(new BackgroundTask(this)),
      pages_(new QTabWidget(this)),
      name_(new QLineEdit(this)),
      email_(new QLineEdit(this)),
      product_(new QLineEdit(this)),
      os_(new QLineEdit(this)),
      topic_(new QComboBox(this)),
      priority_(new QComboBox(this)),
      description_(new QPlainTextEdit(this)),
      attachment_(new QLineEdit(this)),
      add_(new QPushButton(tr("Add &File…"), this)),
      remove_(new QPushButton(tr("Remo&ve"), this)),
      contents_(new QPlainTextEdit(this)),
      drives_(new QComboBox(this)),
      status_(new StatusLine(this)),
      send_(new QPushButton(tr("&Send"), this)),
      cancel_(new QPushButton(tr("Cancel"), this)) {
  facts_.screen = PixelsOf(*screen());
  MakeWindow();
  FillIn();
  Choose(priority_, priority);
  connect(pages_, &QTabWidget::currentChanged, this, &SupportForm::ShowContents);
  connect(remove_, &QPushButton::clicked, attachment_, &QLineEdit::clear);
  connect(send_, &QPushButton::clicked, this, &SupportForm::Send);
  connect(cancel_, &QPushButton::clicked, this, &SupportForm::reject);
  FindFurther();
  SayItIsPractice();
  description_->setFocus();
}

SupportForm::~SupportForm() = default;

void SupportForm::MakeWindow() {
  setObjectName("SupportForm");
  setWindowTitle(tr("Technical Support"));
  resize(620, 560);
  send_->setObjectName("OKButton");
  send_->setDefault(true);
  cancel_->setObjectName("CancelButton");
  pages_->setObjectName("SupportTabs");
  pages_->addTab(MakeRequestPage(), tr("Request"));
  pages_->addTab(MakeContentsPage(), tr("What goes along"));
  auto* column = new FormColumn(this);
  column->Add(pages_, 1);
  column->Add(status_);
  column->AddLine({nullptr, send_, cancel_});
}

QWidget* SupportForm::MakeRequestPage() {
  auto* page = new QWidget(pages_);
  auto* column = new FormColumn(page);
  FormGrid* grid = column->AddGrid();
  grid->Add("NameTextBox", tr("&Name:"), name_);
  grid->Add("EmailTextBox", tr("&Email:"), email_);
  grid->Add("ProductTextBox", tr("&Product:"), product_);
  os_->setReadOnly(true);
  grid->Add("OSTextBox", tr("S&ystem:"), os_);
  AddItems(topic_, support::kTopics);
  grid->Add("TopicComboBox", tr("&Topic:"), topic_);
  AddItems(priority_, profile::kPriorities);
  grid->Add("PriorityComboBox", tr("P&riority:"), priority_);
  description_->setTabChangesFocus(true);
  description_->setMinimumHeight(kLeastDescription);
  description_->setPlaceholderText(tr("What you did, what you expected, and what happened instead"));
  grid->Add("DescriptionTextBox", tr("&Description:"), description_);
  AddAttachment(grid);
  const std::array<QString, support::kFurtherItems> texts = {tr("The report of the &last run, which names recipients"),
                                                             tr("Its first messa&ge, with its recipient's data"),
                                                             tr("The l&og of the session")};
  for (std::size_t item = 0; item < texts.size(); ++item) {
    further_[item] = grid->AddPlain(QString("CheckBox%1").arg(item + 1), new QCheckBox(texts[item], this));
    further_[item]->setEnabled(false);  // until it is known to be there
  }
  return page;
}

void SupportForm::AddAttachment(FormGrid* grid) {
  add_->setObjectName("AddButton");
  remove_->setObjectName("RemoveButton");
  attachment_->setPlaceholderText(tr("A picture of what is wrong"));
  grid->Add("AttachmentTextBox", tr("&Attachment:"), attachment_, {add_, remove_});
  connect(add_, &QPushButton::clicked, this, [this] {
    const auto files = program_.prompts.PickOpenFile({.title = "Technical Support", .filter = "All Files (*.*)|*.*"});
    if (!files.empty()) attachment_->setText(PathToQt(files.front()));
  });
}

QWidget* SupportForm::MakeContentsPage() {
  auto* page = new QWidget(pages_);
  auto* column = new FormColumn(page);
  contents_->setObjectName("ContentsTextBox");
  contents_->setAccessibleName(tr("What goes along"));
  contents_->setReadOnly(true);
  contents_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  contents_->setTabChangesFocus(true);
  contents_->setLayoutDirection(Qt::LeftToRight);
  contents_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  column->Add(contents_, 1);
  for (const auto& drive : facts_.drives) drives_->addItem(ToQt(drive));
  column->AddGrid()->Add("DriveListBox", tr("Drives &in the report:"), drives_);
  return page;
}

void SupportForm::FillIn() {
  const auto request = support::NewRequest(program_.settings);
  if (!request) status_->Fail(request.error());
  const auto shown = request ? *request : support::SupportRequest();
  name_->setText(ToQt(shown.name));
  email_->setText(ToQt(shown.email));
  product_->setText(ToQt(shown.product));
  os_->setText(ToQt(facts_.operating_system));
  Choose(topic_, ToQt(shown.topic));
}

// The history may be long, and on a disk that is slow.
void SupportForm::FindFurther() {
  look_->Start([this, folders = program_.folders](const platform::CancelToken&) {
    const auto found = std::make_shared<Result<support::FurtherFiles>>(support::FindFurtherFiles(folders));
    return [this, found] { OfferFurther(*found); };
  });
}

void SupportForm::OfferFurther(const Result<support::FurtherFiles>& found) {
  if (!found) return status_->Fail(found.error());
  const std::array<QString, support::kFurtherItems> missing = {
      tr("There was no run yet."), tr("The last run left no message."), tr("Nothing has gone wrong yet.")};
  for (std::size_t item = 0; item < further_.size(); ++item) {
    further_[item]->setEnabled((*found)[item].has_value());
    further_[item]->setToolTip((*found)[item] ? QString() : missing[item]);
  }
}

support::SupportRequest SupportForm::Collect() const {
  support::SupportRequest request{.name = FromQt(name_->text()),
                                  .email = FromQt(email_->text()),
                                  .product = FromQt(product_->text()),
                                  .topic = FromQt(topic_->currentData().toString()),
                                  .priority = FromQt(priority_->currentData().toString()),
                                  .description = FromQt(description_->toPlainText()),
                                  .attachment = PathFromQt(attachment_->text())};
  for (std::size_t item = 0; item < further_.size(); ++item) request.further[item] = further_[item]->isChecked();
  return request;
}

// The description stands on the first page as it goes; here it would only push the rest away.
void SupportForm::ShowContents() {
  if (pages_->currentIndex() == 0) return;
  const auto to = support::SupportAddress(environment_);
  if (!to) return status_->Fail(to.error());
  contents_->setPlainText(tr("Looking…"));
  support::SupportRequest request = Collect();
  request.description = FromQt(tr("(your description)"));
  look_->Start([this, &program = program_, request, facts = facts_, to = *to](const platform::CancelToken& cancel) {
    const auto place = run::PlaceOf(program, cancel);
    const auto hidden = support::PasswordToHide(place);
    const auto contents =
        hidden ? support::ContentsOf(request, facts, to, place.folders, place.Settings(), hidden->password)
               : Result<support::RequestContents>(hidden.error());
    QString text = contents ? ToQt(support::AsText(*contents)) : InWords(contents.error());
    if (hidden && hidden->not_known) text.prepend(InWords(*hidden->not_known) + "\n\n");
    return [this, text] { contents_->setPlainText(text); };
  });
}

void SupportForm::Send() {
  const auto request = Collect();
  if (const auto complaint = support::CheckRequest(request)) {
    if (!complaint->message.empty()) program_.prompts.Warn(complaint->message);
    status_->Say(InWords(complaint->reason), NoteKind::kFailure);
    pages_->setCurrentIndex(0);
    return complaint->control == support::SupportControl::kEmail ? email_->setFocus() : description_->setFocus();
  }
  const auto to = support::SupportAddress(environment_);
  if (!to) return status_->Fail(to.error());
  if (sent_ == request) return status_->Say(tr("This request was sent. Change something in it to send another."));
  if (!GoesWhereItWasTold()) return;
  status_->Say(tr("Sending to %1…").arg(ToQt(to->text())));
  task_->Start([this, &program = program_, request, facts = facts_, to = *to,
                route = route_.route()](const platform::CancelToken& cancel) {
    const auto place = run::PlaceOf(program, cancel);
    const auto end = std::make_shared<Result<smtp::Outcome>>(support::SendRequest(request, facts, to, place, route));
    return [this, request, end] { ShowEnd(request, *end); };
  });
  EnableControls();
  cancel_->setFocus();
}

bool SupportForm::GoesWhereItWasTold() {
  const auto change = route_.TakeChange();
  if (!change) return true;
  status_->Fail(*change);
  HoldUntilRead(send_);
  return false;
}

void SupportForm::SayItIsPractice() {
  if (!route_.is_practice()) return;
  status_->Say(tr("You are practising: the request goes to the mailbox on this computer, and nowhere else."),
               NoteKind::kWarning);
}

void SupportForm::ShowEnd(const support::SupportRequest& request, const Result<smtp::Outcome>& end) {
  const bool sent = end && end->state == smtp::State::kSent;
  if (sent) sent_ = request;
  EnableControls();
  if (!sent) send_->setFocus();
  if (!end && !GoesWhereItWasTold()) return;  // it was held back on its way
  status_->Say(InWords(support::WhatBecameOf(end)), sent ? NoteKind::kInformation : NoteKind::kFailure);
  if (sent) SayItIsPractice();
  const auto told = support::TellEnd(end, program_.prompts, program_.desktop);
  if (!told) status_->Fail(told.error());
}

// The button that cancels, and closes, is always there.
void SupportForm::EnableControls() {
  pages_->setEnabled(!task_->is_running());
  send_->setEnabled(!task_->is_running());
}

void SupportForm::reject() {
  if (task_->is_running()) return task_->Cancel();
  const auto request = Collect();
  const bool was_sent = sent_ && sent_->description == request.description && sent_->attachment == request.attachment;
  const bool would_be_lost = !request.description.empty() && !was_sent && request != warned_;
  if (!would_be_lost) return QDialog::reject();
  warned_ = request;
  status_->Say(tr("What you described was not sent. Cancel once more closes, and throws it away."), NoteKind::kWarning);
}

}  // namespace quillcast::desktop

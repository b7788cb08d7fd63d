#include "desktop/run/preview_form.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <limits>

#include "desktop/document/html_editor.h"
#include "desktop/run/ask_prepared.h"
#include "desktop/run/notes_panel.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr int kPhoneWidth = 375;       // pixels
constexpr int kPauseBeforeLook = 200;  // milliseconds after the last change of the recipient

}  // namespace

PreviewForm::PreviewForm(const profile::Program& program, document::MessageDocument document, run::ChosenGroup group,
                         QUrl base, QWidget* parent)
    : QDialog(parent),
      program_(program),
      document_(std::move(document)),
      group_(std::move(group)),
      base_(std::move(base)),
      view_task_(new BackgroundTask(this)),
      send_task_(new BackgroundTask(this)),
      pause_(new QTimer(this)),
      position_(new QSpinBox(this)),
      whom_(new QLabel(this)),
      subject_(new QLabel(this)),
      page_(new HtmlEditor(this)),
      text_(new QPlainTextEdit(this)),
      tabs_(new QTabWidget(this)),
      notes_(new NotesPanel(program, this)),
      pictures_(new PicturesPanel(program, this)),
      send_(new QPushButton(Icon("send"), tr("Send this one to &myself"), this)),
      status_(new StatusLine(this)) {
  SetUpControls();
  BuildWindow();
  connect(pictures_, &PicturesPanel::Known, this, [this](bool settled) { OfferToSend(settled); });
  connect(pictures_, &PicturesPanel::Answered, this, &PreviewForm::TakeAnswer);
  pictures_->LookAt(document_);
  connect(position_, &QSpinBox::valueChanged, pause_, qOverload<>(&QTimer::start));
  connect(pause_, &QTimer::timeout, this, &PreviewForm::ShowRecipient);
  connect(send_, &QPushButton::clicked, this, &PreviewForm::SendToMyself);
  QTimer::singleShot(0, this, &PreviewForm::ShowRecipient);
  notes_->LookAt(document_, group_);
}

void PreviewForm::SetUpControls() {
  pause_->setSingleShot(true);
  pause_->setInterval(kPauseBeforeLook);
  position_->setObjectName("RecipientSpinBox");
  position_->setRange(
      1, static_cast<int>(std::clamp<std::int64_t>(group_.recipients, 1, std::numeric_limits<int>::max())));
  position_->setAccessibleName(tr("Recipient number"));
  whom_->setObjectName("RecipientLabel");
  whom_->setTextFormat(Qt::PlainText);
  whom_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  subject_->setObjectName("SubjectLabel");
  subject_->setTextFormat(Qt::PlainText);
  subject_->setWordWrap(true);
  QFont bold = subject_->font();
  bold.setBold(true);
  bold.setPointSize(bold.pointSize() + 2);
  subject_->setFont(bold);
  text_->setObjectName("PreviewText");
  text_->setReadOnly(true);
  text_->setTabChangesFocus(true);
  text_->setAccessibleName(tr("The text part"));
  page_->SetReadOnly(true);
  page_->SetPicturePlaces(document_.picture_places);
  status_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  send_->setObjectName("SendToMyselfButton");
  send_->setEnabled(false);
}

// Put shows those of the parts that go out.
QWidget* PreviewForm::MakeTabs() {
  auto* frame = new QWidget(this);
  auto* middle = new QHBoxLayout(frame);
  middle->setContentsMargins(0, 0, 0, 0);
  middle->addStretch(1);
  middle->addWidget(page_, 1000);
  middle->addStretch(1);
  tabs_->setObjectName("PreviewTabs");
  tabs_->addTab(frame, tr("&HTML"));
  tabs_->addTab(text_, tr("&Text"));
  return tabs_;
}

void PreviewForm::BuildWindow() {
  setObjectName("PreviewForm");
  setWindowTitle(tr("Preview"));
  resize(860, 640);
  auto* label = new QLabel(tr("As &recipient #"), this);
  label->setBuddy(position_);
  auto* desktop = new QRadioButton(tr("&Desktop"), this);
  auto* phone = new QRadioButton(tr("&Phone"), this);
  phone->setObjectName("PhoneRadioButton");
  desktop->setChecked(true);
  connect(phone, &QRadioButton::toggled, this, &PreviewForm::SetWidth);
  auto* close = new QPushButton(tr("Close"), this);
  close->setDefault(true);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  notes_->AddQuestion(pictures_);
  auto* column = new FormColumn(this);
  column->AddLine({label, position_, whom_, desktop, phone});
  column->Add(subject_);
  column->Add(MakeTabs(), 1);
  column->Add(notes_);
  column->AddLine({send_, status_, close});
}

// A button that is dimmed says why.
void PreviewForm::OfferToSend(bool settled) {
  const bool has_list = group_.recipients > 0;
  send_->setEnabled(settled && has_list);
  const QString reason = has_list ? tr("Answer the question about the pictures first.")
                                  : tr("To send one to yourself, choose a group in the main window first.");
  send_->setToolTip(send_->isEnabled() ? QString() : reason);
  if (!has_list) status_->Say(reason);
}

void PreviewForm::SetWidth(bool phone) { page_->setMaximumWidth(phone ? kPhoneWidth : QWIDGETSIZE_MAX); }

void PreviewForm::TakeAnswer(const std::vector<std::filesystem::path>& files, bool take) {
  document_.picture_places.Answer(files, take);
  page_->SetPicturePlaces(document_.picture_places);
  page_->ReloadPictures();
  notes_->LookAt(document_, group_);
}

void PreviewForm::ShowRecipient() {
  const bool has_list = group_.recipients > 0;
  position_->setEnabled(has_list);
  if (!has_list) whom_->setText(tr("No group is chosen, so the merge tags stay as they are."));
  AskPrepared(
      view_task_, program_, document_, group_,
      [has_list, position = position_->value()](run::PreparedRun& prepared) {
        return has_list ? prepared.View(position) : prepared.ViewOfTags();
      },
      [this](const Result<run::RecipientView>& view) { Put(view); });
}

void PreviewForm::Put(const Result<run::RecipientView>& view) {
  if (!view) {
    status_->Fail(view.error());
    return;
  }
  if (!view->address.empty()) whom_->setText(ToQt(platform::Printable(view->address, 100)));
  subject_->setText(view->subject.empty() ? tr("(no subject)") : ToQt(platform::Printable(view->subject)));
  tabs_->setTabVisible(0, message::HasHtml(view->parts));
  tabs_->setTabVisible(1, message::HasText(view->parts));
  text_->setPlainText(ToQt(view->text));
  page_->SetHtml(ToQt(view->html), base_);
  if (page_->unshown()) status_->Fail(*page_->unshown());
}

void PreviewForm::SendToMyself() {
  if (send_task_->is_running()) {
    send_task_->Cancel();
    return;
  }
  send_->setText(tr("Stop"));
  status_->Say(tr("Sending…"));
  AskPrepared(
      send_task_, program_, document_, group_,
      [position = position_->value()](run::PreparedRun& prepared) { return prepared.SendToMyself(position); },
      [this](const Result<Sentence>& told) {
        send_->setText(tr("Send this one to &myself"));
        if (told) {
          status_->Say(InWords(*told));
        } else {
          status_->Fail(told.error());
        }
      });
}

}  // namespace quillcast::desktop

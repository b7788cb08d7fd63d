#include "desktop/run/preview_form.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <limits>
#include <memory>

#include "desktop/document/html_editor.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/widgets/first_key.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/own_direction.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr int kPhoneWidth = 375;  // pixels
constexpr int kPause = 200;       // milliseconds after the last change of the recipient

}  // namespace

PreviewForm::PreviewForm(const profile::Program& program, document::MessageDocument document, run::ChosenGroup group,
                         QUrl base, QWidget* parent)
    : QDialog(parent),
      program_(program),
      document_(std::move(document)),
      group_(std::move(group)),
      base_(std::move(base)),
      view_task_(new BackgroundTask(this)),
      look_task_(new BackgroundTask(this)),
      send_task_(new BackgroundTask(this)),
      pause_(new QTimer(this)),
      position_(new QSpinBox(this)),
      whom_(new QLabel(this)),
      subject_(new QLabel(this)),
      page_(new HtmlEditor(this)),
      text_(new QPlainTextEdit(this)),
      findings_(new QListWidget(this)),
      pictures_(new PicturesPanel(program, this)),
      send_(new QPushButton(Icon("send"), tr("Send this one to &myself"), this)),
      status_(new StatusLine(this)) {
  BuildWindow();
  page_->SetReadOnly(true);
  page_->SetPicturePlaces(document_.picture_places);
  connect(pictures_, &PicturesPanel::Known, this,
          [this](bool settled) { send_->setEnabled(settled && group_.recipients > 0); });
  connect(pictures_, &PicturesPanel::Answered, this, &PreviewForm::TakeAnswer);
  send_->setEnabled(false);
  pictures_->LookAt(document_);
  connect(position_, &QSpinBox::valueChanged, pause_, qOverload<>(&QTimer::start));
  connect(pause_, &QTimer::timeout, this, &PreviewForm::ShowRecipient);
  connect(send_, &QPushButton::clicked, this, &PreviewForm::SendToMyself);
  QTimer::singleShot(0, this, [this] {
    ShowRecipient();
    LookOver();
  });
}

void PreviewForm::BuildWindow() {
  setObjectName("PreviewForm");
  setWindowTitle(tr("Preview"));
  resize(860, 640);
  pause_->setSingleShot(true);
  pause_->setInterval(kPause);
  position_->setObjectName("RecipientSpinBox");
  position_->setRange(
      1, static_cast<int>(std::clamp<std::int64_t>(group_.recipients, 1, std::numeric_limits<int>::max())));
  position_->setAccessibleName(tr("Recipient number"));
  whom_->setObjectName("RecipientLabel");
  whom_->setTextFormat(Qt::PlainText);
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
  findings_->setObjectName("FindingsList");
  findings_->setAccessibleName(tr("What was found"));
  findings_->setWordWrap(true);
  findings_->setItemDelegate(new OwnDirection(findings_));
  new FirstKey(findings_);
  findings_->setMaximumHeight(110);
  findings_->addItem(tr("Looking over the whole group…"));
  status_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  send_->setObjectName("SendToMyselfButton");

  auto* desktop = new QRadioButton(tr("&Desktop"), this);
  auto* phone = new QRadioButton(tr("&Phone"), this);
  phone->setObjectName("PhoneRadioButton");
  desktop->setChecked(true);
  connect(phone, &QRadioButton::toggled, this, &PreviewForm::SetWidth);
  auto* label = new QLabel(tr("As &recipient #"), this);
  label->setBuddy(position_);
  whom_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  auto* tabs = new QTabWidget(this);
  tabs->setObjectName("PreviewTabs");
  auto* frame = new QWidget(this);
  auto* middle = new QHBoxLayout(frame);
  middle->setContentsMargins(0, 0, 0, 0);
  middle->addStretch(1);
  middle->addWidget(page_, 1000);
  middle->addStretch(1);
  const bool sends_html = document_.format == document::Format::kHtml;
  tabs->addTab(frame, tr("&HTML"));
  tabs->addTab(text_, tr("&Text"));
  if (!sends_html) {
    tabs->setTabVisible(0, false);
    tabs->setCurrentIndex(1);
  }
  auto* close = new QPushButton(tr("Close"), this);
  close->setDefault(true);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  auto* column = new FormColumn(this);
  column->AddLine({label, position_, whom_, desktop, phone});
  column->Add(subject_);
  column->Add(tabs, 1);
  column->Add(findings_);
  column->Add(pictures_);
  column->AddLine({send_, status_, close});
}

void PreviewForm::SetWidth(bool phone) { page_->setMaximumWidth(phone ? kPhoneWidth : QWIDGETSIZE_MAX); }

void PreviewForm::LookOver() {
  look_task_->Start(
      [this, &program = program_, document = document_, group = group_](const platform::CancelToken& cancel) {
        auto prepared = run::Prepare(document, group, run::PlaceOf(program, cancel));
        auto found = std::make_shared<Result<run::MessageLook>>(prepared.LookOver(run::PreparedRun::Server::kIsAsked));
        return [this, found] {
          findings_->clear();
          if (!*found) {
            findings_->addItem(InWords(found->error()));
            return;
          }
          const run::MessageLook& look = **found;
          const QStringList troubles = InWords(look.Troubles());
          findings_->addItems(troubles);
          if (troubles.isEmpty()) findings_->addItem(tr("Nothing was found that looks wrong."));
          findings_->addItems(InWords(look.along));
          if (!look.size.empty()) findings_->addItem(InWords(look.size));
        };
      });
}

void PreviewForm::TakeAnswer(const std::vector<std::filesystem::path>& files, bool take) {
  document_.picture_places.Answer(files, take);
  page_->SetPicturePlaces(document_.picture_places);
  page_->ReloadPictures();
  LookOver();
}

void PreviewForm::ShowRecipient() {
  if (group_.recipients == 0) {
    whom_->setText(tr("No group is chosen, so the merge tags stay as they are."));
    Put(run::ViewOfTags(document_));
    position_->setEnabled(false);
    return;
  }
  view_task_->Start([this, &program = program_, document = document_, group = group_,
                     position = position_->value()](const platform::CancelToken& cancel) {
    const auto prepared = run::Prepare(document, group, run::PlaceOf(program, cancel));
    auto view = std::make_shared<Result<run::RecipientView>>(prepared.View(position));
    return [this, view] {
      if (*view) whom_->setText(ToQt(platform::Printable((*view)->address, 100)));
      Put(*view);
    };
  });
}

void PreviewForm::Put(const Result<run::RecipientView>& view) {
  if (!view) {
    status_->Fail(view.error());
    return;
  }
  subject_->setText(view->subject.empty() ? tr("(no subject)") : ToQt(platform::Printable(view->subject)));
  text_->setPlainText(ToQt(view->text));
  page_->SetHtml(ToQt(view->html), base_);
}

void PreviewForm::SendToMyself() {
  if (send_task_->is_running()) {
    send_task_->Cancel();
    return;
  }
  send_->setText(tr("Stop"));
  status_->Say(tr("Sending…"));
  send_task_->Start([this, &program = program_, document = document_, group = group_,
                     position = position_->value()](const platform::CancelToken& cancel) {
    auto prepared = run::Prepare(document, group, run::PlaceOf(program, cancel));
    auto told = std::make_shared<Result<Sentence>>(prepared.SendToMyself(position));
    return [this, told] {
      send_->setText(tr("Send this one to &myself"));
      if (*told) {
        status_->Say(InWords(**told));
      } else {
        status_->Fail(told->error());
      }
    };
  });
}

}  // namespace quillcast::desktop

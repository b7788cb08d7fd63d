#include "desktop/shell/notices.h"

#include <QTimer>
#include <QVBoxLayout>

#include "account/account_settings.h"
#include "desktop/run/pictures_panel.h"
#include "desktop/shell/practice_mailbox.h"
#include "desktop/widgets/notice_bar.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr int kArrivalsPause = 250;  // milliseconds
constexpr std::size_t kLongestShown = 100;

}  // namespace

Notices::Notices(const profile::Program& program, const document::Drafts& drafts, PracticeMailbox& practice,
                 QWidget* parent)
    : QWidget(parent),
      program_(program),
      drafts_(drafts),
      practice_(practice),
      bar_(new NoticeBar(this)),
      pictures_(new PicturesPanel(program, this)),
      arrivals_(new QTimer(this)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(bar_);
  column->addWidget(pictures_);
  pictures_->DropLetters();
  connect(pictures_, &PicturesPanel::Known, this, [this] {
    if (pictures_->asks() != bar_->isHidden()) Refresh();
  });
  connect(&practice_, &PracticeMailbox::Arrived, this, [this] {
    ++arrived_;
    if (!arrivals_->isActive()) arrivals_->start(kArrivalsPause);
  });
  arrivals_->setSingleShot(true);
  connect(arrivals_, &QTimer::timeout, this, &Notices::Refresh);
}

void Notices::Refresh() {
  if (pictures_->asks()) {
    bar_->hide();
  } else if (drafts_.AreOffered()) {
    ShowDraft();
  } else if (practice_.practice().is_on()) {
    ShowPractice();
  } else {
    ShowAccount();
  }
}

void Notices::ShowDraft() {
  const QString subject = ToQt(platform::Printable(drafts_.OfferedSubject(), kLongestShown));
  bar_->Show(
      subject.isEmpty() ? tr("An unfinished message was kept.") : tr("An unfinished message was kept: %1").arg(subject),
      {{tr("Restore"), "RestoreButton", [this] { emit RestorePressed(); }},
       {tr("Discard"), "DiscardButton", [this] { Discard(); }}});
}

void Notices::ShowPractice() {
  const QString arrived = Counted(arrived_, tr("1 message has arrived."), tr("%1 messages have arrived."));
  bar_->Show(tr("Practice: what you send goes to a mailbox on this machine and nowhere else. %1").arg(arrived),
             {{tr("Show them"), "ShowPracticeButton", [this] { emit PracticePressed(); }},
              {tr("End practice"), "EndPracticeButton", [this] { EndPractice(); }}});
}

void Notices::ShowAccount() {
  const auto filled_in = account::AccountIsFilledIn(program_.settings);
  if (!filled_in) emit Failed(filled_in.error());
  if (!filled_in || *filled_in) {
    bar_->hide();
    return;
  }
  bar_->Show(tr("There is no mail account yet. Fill it in, or practise first with a mailbox on this machine."),
             {{tr("Fill i&n the account…"), "FillInButton", [this] { emit AccountPressed(); }},
              {tr("&Practise"), "PractiseButton", [this] { BeginPractice(); }}});
}

void Notices::Discard() {
  drafts_.DropOffered();
  Refresh();
}

void Notices::GoOnPractising() {
  if (practice_.practice().WasOn()) BeginPractice();
}

// Counted before it takes any more, for each of those is announced.
void Notices::BeginPractice() {
  arrived_ = static_cast<qint64>(account::PracticeMessages(practice_.practice().folder()).size());
  const auto begun = practice_.Begin();
  if (!begun) emit Failed(begun.error());
  emit PracticeChanged();
  Refresh();
}

void Notices::EndPractice() {
  const auto ended = practice_.practice().End();
  if (!ended) emit Failed(ended.error());
  emit PracticeChanged();
  Refresh();
}

}  // namespace quillcast::desktop

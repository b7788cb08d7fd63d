// What stands above the message for the person to know or to answer, one thing at a time: pictures that are asked
// about, a message that was kept, practice, an account that is missing.
#pragma once

#include <QWidget>
#include <optional>
#include <set>

#include "account/practice.h"
#include "desktop/widgets/notice_bar.h"
#include "document/drafts.h"
#include "platform/result.h"
#include "profile/program.h"
#include "run/journal/run_journal.h"

class QTimer;

namespace quillcast::desktop {

class PicturesPanel;
class PracticeMailbox;

class Notices final : public QWidget {
  Q_OBJECT
 public:
  Notices(const profile::Program& program, const document::Drafts& drafts, PracticeMailbox& practice, QWidget* parent);

  // What is due now.
  void Refresh();
  // Whether there is a run to be gone on with, because its program or its computer was stopped.
  void LookForCutOff();
  // Whether there is an account by now, and whether it still names the practice mailbox: another program may have named
  // a server, which ends practice. While a window stands over this one only what is shown changes, for a run may still
  // send there.
  void LookAtPractice();
  // Takes up practice where an earlier session left it, or ends it where its mailbox is the account's no more; as soon
  // as that can be read.
  void GoOnPractising();
  PicturesPanel& pictures() { return *pictures_; }
  // What the notices offer. Practice does not begin where there is an account by then, which is told.
  Result<void> BeginPractice();
  void EndPractice();

 signals:
  void RestorePressed();
  void AccountPressed();
  void PracticePressed();
  // To go on with this one.
  void RunsPressed(quillcast::run::RunId run);
  void PracticeChanged();  // and with it the account
  void PracticeTold(const QString& how);
  void Failed(const quillcast::Error& error);

 private:
  void ShowCutOff();
  void ShowDraft();
  QString PracticeSentence() const;
  std::vector<NoticeBar::Offer> PracticeOffers();
  void ShowAccount();
  void Discard();
  void TellEnd(const account::PracticeEnd& end);

  const profile::Program& program_;
  const document::Drafts& drafts_;
  PracticeMailbox& practice_;
  NoticeBar* bar_;
  PicturesPanel* pictures_;  // in the bar's place while it asks
  std::optional<run::MailingEntry> cut_off_;
  std::set<run::RunId> left_for_later_;  // the last runs of mailings, as the person said
  bool told_of_damage_ = false;          // in the journal
  qint64 arrived_ = 0;                   // in the practice mailbox, those of earlier sessions too
  QTimer* arrivals_;                     // tells of them a few times a second
  QTimer* watch_;                        // looks at the account as long as practice is on
  bool may_go_on_ = false;               // practice of an earlier session, which could not be read yet
};

}  // namespace quillcast::desktop

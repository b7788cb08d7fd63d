// What stands above the message for the person to know or to answer, one thing at a time: pictures that are asked
// about, a message that was kept, practice, an account that is missing.
#pragma once

#include <QWidget>

#include "document/drafts.h"
#include "platform/result.h"
#include "profile/program.h"

class QTimer;

namespace quillcast::desktop {

class NoticeBar;
class PicturesPanel;
class PracticeMailbox;

class Notices final : public QWidget {
  Q_OBJECT
 public:
  Notices(const profile::Program& program, const document::Drafts& drafts, PracticeMailbox& practice, QWidget* parent);

  // What is due now.
  void Refresh();
  // Takes up practice where an earlier session left it.
  void GoOnPractising();
  PicturesPanel& pictures() { return *pictures_; }
  // Practice takes the account's place, whatever that is; and what its notice offers.
  void BeginPractice();
  void EndPractice();

 signals:
  void RestorePressed();
  void AccountPressed();
  void PracticePressed();
  void PracticeChanged();  // and with it the account
  void Failed(const quillcast::Error& error);

 private:
  void ShowDraft();
  void ShowPractice();
  void ShowAccount();
  void Discard();

  const profile::Program& program_;
  const document::Drafts& drafts_;
  PracticeMailbox& practice_;
  NoticeBar* bar_;
  PicturesPanel* pictures_;  // in the bar's place while it asks
  qint64 arrived_ = 0;       // in the practice mailbox, those of earlier sessions too
  QTimer* arrivals_;         // tells of them a few times a second
};

}  // namespace quillcast::desktop

// What the sending window says above all else: what goes to whom, from whom over which servers, and how fast, which can
// be chosen here for the run.
#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <string>

#include "account/shown_route.h"
#include "desktop/run/run_worker.h"
#include "profile/program.h"
#include "run/pace/pace_rules.h"
#include "run/prepared_run.h"

class QLabel;
class QPushButton;

namespace quillcast::desktop {

class RunHeading final : public QWidget {
  Q_OBJECT
 public:
  using Server = account::ShownRoute::Server;
  RunHeading(const profile::Program& program, const std::string& subject, const run::ChosenGroup& group, Server server,
             QWidget* parent);

  // Opens the account at its page of the pace over this window, and returns when that has closed.
  std::function<void(QWidget*)> change_account;
  // A run that goes on: who its letters come from, and how it was told to go before.
  void GoesOnWith(const std::string& from, const run::PaceTexts& told);
  // What is other by now than is shown here; from then on that is shown.
  std::optional<Error> TakeChange();
  // The way that is shown, and what the person chose for this run.
  RunWorker::Way way() const { return {shown_.route(), pace_}; }
  // From then on there is nothing to choose.
  void Begins();

 signals:
  // The person is about to choose; and has: the pace may be another, or the account.
  void Choosing();
  void Chosen();

 private:
  void ShowRoute();
  void ShowPace();
  QString PaceText() const;
  void ChoosePace();

  const profile::Program& program_;
  account::ShownRoute shown_;
  std::string from_;  // of a run that goes on
  run::PaceTexts told_;
  run::PaceTexts pace_;
  QLabel* route_;
  QLabel* pace_line_;
  QPushButton* pace_button_;
};

}  // namespace quillcast::desktop

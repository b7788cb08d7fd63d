// The runs that are kept: how each stands, and what can be done about its recipients.
#pragma once

#include <QDialog>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "desktop/run/go_on_request.h"
#include "desktop/run/kept_runs_list.h"
#include "profile/program.h"
#include "run/chosen_pages.h"
#include "run/kept_runs.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace quillcast::desktop {

class BackgroundTask;
class FormColumn;
class RowList;
class StatusLine;

class KeptRunsForm final : public QDialog {
  Q_OBJECT
 public:
  KeptRunsForm(const profile::Program& program, QWidget* parent);

  // The mailing of this run; where there is none any more, the newest stays chosen.
  void Choose(run::RunId run);
  // That run itself, by the base name of its files in the history; with none, the newest stays chosen.
  void ChooseReport(std::string_view history);

  // Opens the sending window for it, and returns when that has closed.
  std::function<void(const GoOnRequest&)> go_on;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void MakeButtons(FormColumn* column);
  void Fill();
  void EnableButtons();
  void Tell(const QString& done);
  QString HowManyAreChosen() const;
  void TellOfThem(const run::MailingEntry& mailing, bool is_sent_now);
  // Of the chosen ones.
  QString TextOfOne(std::size_t row, int column);
  // Who is listed goes by what the boxes ask for.
  void ListThem();
  // The first state that somebody of another mailing is in.
  void MeetMailing();
  // Whom the boxes ask for. kUsage for a reply that is none.
  Result<run::RecipientChoice> Choice() const;
  Result<std::int64_t> Count() const;
  std::optional<run::RunKind> Kind() const;  // of a run to them; nothing where they have it already
  void SendToThese();
  // What takes as long as the mailing is large, on a thread of its own; what it returns is told.
  void Work(std::function<Result<Sentence>(run::RunJournal&, const platform::CancelToken&)> work);
  void ExportList();
  void MakeGroup();
  void WriteReport();
  void Forget();
  void ForgetDamaged(const run::DamagedMailing& damaged);

  const profile::Program& program_;
  run::ChosenPages pages_;
  run::MailingId met_ = 0;  // the mailing that was chosen last
  std::optional<std::pair<run::MailingId, run::RecipientChoice>> listed_;
  KeptRunsList* runs_;
  RowList* people_;
  QComboBox* states_;
  QLineEdit* reply_;
  QLineEdit* group_;
  StatusLine* status_;
  run::RecipientChoice choice_;  // as the boxes had it when the buttons were last enabled
  std::int64_t count_ = 0;       // of those
  QString told_;                 // what came of the button that was pressed last, as long as it stands
  BackgroundTask* task_;
  QWidget* focus_before_ = nullptr;  // the work began, and while it goes on
  QWidget* focus_meanwhile_ = nullptr;
  QPushButton* send_ = nullptr;
  QPushButton* list_ = nullptr;
  QPushButton* make_group_ = nullptr;
  QPushButton* report_ = nullptr;
  QPushButton* forget_ = nullptr;
};

}  // namespace quillcast::desktop

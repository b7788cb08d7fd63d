// The dialog that finds recipients of a group and changes those that were found.
#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "desktop/widgets/background_task.h"
#include "profile/program.h"
#include "recipients/recipient_search.h"

class QComboBox;
class QLineEdit;
class QPushButton;
class QStackedWidget;
class QTimer;

namespace quillcast::desktop {

class FormColumn;
class GridActions;
class RecipientRows;
class RowList;
class StatusLine;
class WorkPanel;

// What it shows are keys that a search found: a row is read when it is shown, and one that another program took away
// since is shown as gone. It searches while one types only as long as the group answers within 50 ms.
class RecipientSearchForm final : public QDialog {
  Q_OBJECT
 public:
  // Searches `group`, found by its name at each search; nobody is shown before the first.
  RecipientSearchForm(const profile::Program& program, QString group, QWidget* parent);
  ~RecipientSearchForm() override;
  // Recipients were changed, moved or deleted, or there is a group more: who shows groups reads them again.
  bool has_changed() const { return has_changed_; }

 public slots:
  // While something is being deleted, this ends that, and nothing is changed then.
  void reject() override;

 private:
  // kTyped: while somebody types, and only where the group answers at once.
  enum class Kind { kAsked, kTyped };
  struct News;

  void MakeWindow();
  void AddKeys();
  void AddButtons(FormColumn* column);
  void EnableControls(bool is_idle);
  recipients::SearchRequest Request() const;
  void Search();
  void SearchAsTyped();
  void Start(Kind kind, const recipients::SearchRequest& request);
  void TakeNews();
  void GiveUpTyped();
  void GiveUpSearch();
  void ShowNobody();
  void End(Kind kind, const Result<void>& done);
  void SayFound();
  // Warns where no row is chosen, as the commands on one row do.
  bool HasChosen();
  std::vector<std::size_t> RowsOf(const std::vector<std::int64_t>& keys) const;
  void Modify();
  void Delete();
  void Deleted(const std::vector<std::size_t>& rows, std::int64_t count);
  void Move();
  void Print();
  // The keys of the chosen rows, or of all that were found where none is chosen.
  std::vector<std::int64_t> ChosenOrAll() const;

  const profile::Program& program_;
  const QString group_;
  BackgroundTask* task_;
  QTimer* tick_;
  QTimer* answer_time_;
  std::shared_ptr<News> news_;         // shared with the thread that searches
  recipients::SearchRequest request_;  // whose results are shown
  QString told_;                       // of a change, before how many were found after it
  bool answers_at_once_ = true;
  bool has_changed_ = false;
  QComboBox* field_;
  QComboBox* compare_;
  QLineEdit* term_;
  QPushButton* search_;
  std::vector<QPushButton*> buttons_;  // that change those who were found
  RecipientRows* rows_;
  RowList* grid_;
  GridActions* actions_;
  StatusLine* status_;
  WorkPanel* work_;
  QStackedWidget* line_;  // the two, one at a time
};

}  // namespace quillcast::desktop

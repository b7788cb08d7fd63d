// The dialog in which groups go into another one: which, how far that is, and who was there already.
#pragma once

#include <QDialog>
#include <optional>
#include <string>
#include <vector>

#include "profile/program.h"
#include "recipients/edit/move_recipients.h"

class QPushButton;

namespace quillcast::desktop {

class RowList;
class StatusLine;
class WorkPanel;

// Merges itself, after its question, beside the window; one transaction, so that a cancel leaves all groups as they
// were.
class MergeForm final : public QDialog {
  Q_OBJECT
 public:
  // `groups` are all there are; what is chosen of the others goes into `into`.
  MergeForm(const profile::Program& program, const std::vector<std::string>& groups, std::string into, QWidget* parent);
  // None where nothing was merged.
  const std::optional<recipients::MoveOutcome>& outcome() const { return outcome_; }
  // What came of it, for the window that opened it.
  QString said() const;

 public slots:
  // Asks first; stays open where none is chosen, and until who was there already has been seen.
  void accept() override;
  // While groups are being merged, this ends that, and nothing is changed then.
  void reject() override;

 private:
  void MakeWindow();
  std::vector<std::string> Chosen() const;
  void End(const Result<recipients::MoveOutcome>& outcome);
  void ShowDuplicates();

  const profile::Program& program_;
  const std::string into_;
  std::vector<std::string> others_;
  std::optional<recipients::MoveOutcome> outcome_;
  StatusLine* what_;
  RowList* list_;
  RowList* duplicates_;
  StatusLine* status_;
  WorkPanel* work_;
  QPushButton* ok_;
};

}  // namespace quillcast::desktop

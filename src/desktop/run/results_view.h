// Who got the message, who did not and why: a list to filter, copy and save.
#pragma once

#include <QWidget>
#include <vector>

#include "desktop/widgets/note.h"
#include "profile/program.h"
#include "run/proposed_name.h"
#include "run/run_results.h"

class QComboBox;
class QLineEdit;

namespace quillcast::desktop {

class RowList;
class StatusLine;

class ResultsView final : public QWidget {
  Q_OBJECT
 public:
  // A file of them is called by the mailing.
  ResultsView(const run::RunResults& results, run::NamedMailing mailing, const profile::Program& program,
              QWidget* parent);
  // Takes in the results that came since.
  void Grow();

 private:
  QString TextOf(std::size_t shown, int column) const;
  void LookOverAgain();
  void Filter();
  std::int64_t CountUnknown(const std::vector<std::uint32_t>& rows) const;
  QString CountText() const;
  void ShowCount();
  void Tell(const QString& what, NoteKind as = NoteKind::kInformation);
  void Copy();
  void Save();

  const run::RunResults& results_;
  const run::NamedMailing mailing_;
  const profile::Program& program_;
  run::RunResults::Filter filter_;
  std::vector<std::uint32_t> rows_;  // of the results, those that pass it
  std::size_t seen_ = 0;             // of the results
  std::int64_t changes_ = 0;         // of them
  std::int64_t unknown_ = 0;         // of the rows
  QString told_;                     // what came of saving them, until another filter is chosen
  NoteKind told_as_ = NoteKind::kInformation;
  QComboBox* states_;
  QLineEdit* text_;
  RowList* table_;
  StatusLine* count_;
};

}  // namespace quillcast::desktop

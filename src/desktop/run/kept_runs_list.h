// The mailings that the journal keeps and the runs that went on with them, newest first. While it is on the screen it
// follows what this program and others do: it looks at the journal every other second, and what is chosen stays so.
#pragma once

#include <QWidget>
#include <optional>
#include <string_view>
#include <vector>

#include "profile/program.h"
#include "run/journal/run_journal.h"

class QTimer;

namespace quillcast::desktop {

class BackgroundTask;
class RowList;

class KeptRunsList final : public QWidget {
  Q_OBJECT
 public:
  KeptRunsList(const profile::Program& program, QWidget* parent);

  // Reads them now. Fails as the journal does, and is empty then.
  Result<void> Fill();
  // The mailing of the chosen line, where it can be read: until the list changes, which it may do whenever events are
  // taken.
  const run::MailingEntry* Mailing() const;
  // The one of the chosen line, where that cannot be read.
  std::optional<run::DamagedMailing> Damaged() const;
  // All of those; they stand below the others.
  const std::vector<run::DamagedMailing>& AllDamaged() const { return kept_.damaged; }
  // The mailing of this run; where there is none any more, what is chosen stays.
  void ChooseRun(run::RunId run);
  // The run with this base name in the history, be it one that went on with another; where there is none, nothing is
  // chosen, and this is false.
  bool ChooseReport(std::string_view history);

 signals:
  void ChosenChanged();
  // The same line is chosen as before, and what stands in it is not what it was; or the line is gone.
  void Followed();

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  // A mailing by its first run, or a run that went on with it.
  struct Line {
    std::size_t mailing = 0;
    std::size_t run = 0;
  };

  QString TextOf(std::size_t row, int column) const;
  static QString TextOf(const run::DamagedMailing& damaged, int column);
  static QString StandingOf(const run::MailingEntry& mailing);
  QString StandingOf(const run::RunEntry& run) const;
  const run::RunEntry& RunOf(const Line& line) const { return kept_.mailings[line.mailing].runs[line.run]; }
  // What a line is known by while the list changes.
  run::RunId NumberIn(std::size_t row) const;
  std::vector<run::RunId> Numbers() const;  // in all lines
  void Look();
  void Take(run::JournalList kept);

  const profile::Program& program_;
  run::JournalList kept_;
  std::vector<Line> lines_;  // of those that are whole
  RowList* grid_;
  QTimer* pause_;  // between two looks
  BackgroundTask* look_;
};

}  // namespace quillcast::desktop

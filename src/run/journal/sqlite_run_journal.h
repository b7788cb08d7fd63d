// The journal in one SQLite file.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/sqlite.h"
#include "run/journal/journal_file.h"
#include "run/journal/journalled_run.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// Belongs to one thread. Its runs have connections of their own: each may belong to another, and outlive it.
class SqliteRunJournal final : public RunJournal {
 public:
  static Result<std::unique_ptr<SqliteRunJournal>> Open(const JournalPlace& place);

  Result<KeptFile> Keep(std::string name, int fd) override;
  Result<std::unique_ptr<JournalledRun>> Begin(const NewMailing& mailing, recipients::RowSource& rows,
                                               const std::optional<recipients::PartialRange>& range,
                                               NewRun run) override;
  Result<std::unique_ptr<JournalledRun>> GoOn(MailingId mailing, RunKind kind, const RecipientChoice& choice,
                                              NewRun run) override;
  Result<JournalList> List() override;
  Result<MailingId> MailingOf(RunId run) override;
  Result<MailingEntry> Find(RunId run) override;
  Result<NewMailing> Inputs(MailingId mailing) override;
  Result<platform::UniqueFd> Open(const KeptFile& file) override;
  Result<std::int64_t> Count(MailingId mailing, const RecipientChoice& choice) override;
  Result<void> Visit(MailingId mailing, const RecipientChoice& choice, std::int64_t skip,
                     const std::function<Result<bool>(const JournalRow&)>& visit) override;
  Result<void> Forget(MailingId mailing) override;

 private:
  SqliteRunJournal(JournalPlace place, platform::Database database)
      : place_(std::move(place)), database_(std::move(database)) {}
  Result<std::unique_ptr<JournalledRun>> Freeze(const NewMailing& mailing, recipients::RowSource& rows,
                                                const std::optional<recipients::PartialRange>& range, NewRun begins);
  Result<std::unique_ptr<JournalledRun>> TakeUp(MailingId mailing, RunKind kind, const RecipientChoice& choice,
                                                NewRun begins);
  Result<void> TakeWhatWasToldLast(MailingId mailing);

  JournalPlace place_;
  platform::Database database_;
};

}  // namespace quillcast::run

#include "run/journal/mailing_tables.h"

#include <algorithm>
#include <utility>

#include "run/journal/varint.h"

namespace quillcast::run {
namespace {

constexpr const char* kMailing = "SELECT subject, people, recipients, first, counts FROM mailings WHERE id = ?";
constexpr const char* kRuns =
    "SELECT id, kind, history, boot, began, ended, recipients, pace, round FROM runs WHERE mailing = ? ORDER BY number";
constexpr const char* kAddMailing =
    "INSERT INTO mailings(subject, people, inputs, recipients, first) VALUES(?, ?, ?, 0, 1)";
constexpr const char* kAddRun =
    "INSERT INTO runs(mailing, number, kind, history, boot, began, recipients, pace) VALUES(?, ?, ?, ?, ?, ?, ?, ?)";

std::chrono::sys_seconds TimeOf(std::int64_t seconds) {
  return std::chrono::sys_seconds(std::chrono::seconds(seconds));
}

std::string Octets(const MailingCounts& counts) {
  std::string octets;
  for (const std::int64_t count : counts.states) AppendVarint(static_cast<std::uint64_t>(count), octets);
  AppendVarint(static_cast<std::uint64_t>(counts.tried_again), octets);
  return octets;
}

// Files of the first layout have no number of those who are tried again: nobody was known to be.
std::optional<MailingCounts> ReadCounts(std::string_view octets) {
  MailingCounts counts{};
  std::uint64_t number = 0;
  for (std::int64_t& count : counts.states) {
    if (!TakeVarint(octets, number)) return {};
    count = static_cast<std::int64_t>(number);
  }
  if (TakeVarint(octets, number)) counts.tried_again = static_cast<std::int64_t>(number);
  return counts;
}

RunKind KindOf(std::int64_t number) {
  return number == 1 ? RunKind::kResume : number == 2 ? RunKind::kRetry : RunKind::kFirst;
}

Result<std::vector<StoredRun>> ReadRuns(platform::Database& database, MailingId mailing) {
  auto statement = database.Prepare(kRuns);
  if (!statement) return statement.error();
  if (auto bound = statement->Bind(1, mailing); !bound) return bound.error();
  std::vector<StoredRun> runs;
  for (;;) {
    const auto row = statement->Step();
    if (!row) return row.error();
    if (!*row) return runs;
    StoredRun run;
    run.entry.id = statement->Int(0);
    run.entry.mailing = mailing;
    run.entry.kind = KindOf(statement->Int(1));
    run.entry.history = statement->Text(2);
    run.boot = statement->Text(3);
    run.entry.began = TimeOf(statement->Int(4));
    if (!statement->IsNull(5)) run.entry.ended = TimeOf(statement->Int(5));
    run.entry.recipients = statement->Int(6);
    run.entry.pace = statement->Text(7);
    run.round = statement->Int(8);
    runs.push_back(std::move(run));
  }
}

// What the system's clock can tell, and so be written as a date: from 1677 to 2262.
bool IsMoment(std::chrono::sys_seconds moment) {
  using Clock = std::chrono::system_clock;
  return moment > std::chrono::ceil<std::chrono::seconds>(Clock::time_point::min()) &&
         moment < std::chrono::floor<std::chrono::seconds>(Clock::time_point::max());
}

bool IsPossible(const StoredRun& run, std::int64_t recipients) {
  return run.entry.recipients >= 0 && run.entry.recipients <= recipients && IsMoment(run.entry.began) &&
         (!run.entry.ended || IsMoment(*run.entry.ended));
}

// Each began with a run, and is for so many.
bool IsPossible(const StoredMailing& mailing) {
  const auto fits = [all = mailing.entry.recipients](std::int64_t count) { return count >= 0 && count <= all; };
  if (mailing.runs.empty() || mailing.first < 1 || mailing.entry.recipients < 0) return false;
  const auto is_possible = [&](const StoredRun& run) { return IsPossible(run, mailing.entry.recipients); };
  if (!std::ranges::all_of(mailing.runs, is_possible)) return false;
  if (!mailing.counts) return true;
  const StateCounts& counts = mailing.counts->states;
  return std::ranges::all_of(counts, fits) && CountIn(counts, StateSet().set()) == mailing.entry.recipients &&
         fits(mailing.counts->tried_again);
}

}  // namespace

Error NoSuchMailing() { return {Failure::kNoInput, "This mailing is not in the journal.", "See which there are."}; }

Result<StoredMailing> ReadMailing(platform::Database& database, MailingId mailing) {
  auto statement = database.Prepare(kMailing);
  if (!statement) return statement.error();
  if (auto bound = statement->Bind(1, mailing); !bound) return bound.error();
  const auto row = statement->Step();
  if (!row) return row.error();
  if (!*row) return NoSuchMailing();
  StoredMailing stored;
  stored.entry.id = mailing;
  stored.entry.subject = statement->Text(0);
  stored.entry.group = statement->Text(1);
  stored.entry.recipients = statement->Int(2);
  stored.first = statement->Int(3);
  if (!statement->IsNull(4)) stored.counts = ReadCounts(statement->Bytes(4));
  auto runs = ReadRuns(database, mailing);
  if (!runs) return runs.error();
  stored.runs = *std::move(runs);
  if (!IsPossible(stored)) return DamagedMailingIn(database.path());
  return stored;
}

Result<MailingId> MailingOf(platform::Database& database, RunId run) {
  auto statement = database.Prepare("SELECT mailing FROM runs WHERE id = ?");
  if (!statement) return statement.error();
  if (auto bound = statement->Bind(1, run); !bound) return bound.error();
  const auto row = statement->Step();
  if (!row) return row.error();
  if (!*row) return Error{Failure::kNoInput, Say("There is no run {} in the journal.", run), "See which there are."};
  return statement->Int(0);
}

Result<std::vector<MailingId>> AllMailings(platform::Database& database) {
  auto statement = database.Prepare("SELECT id FROM mailings ORDER BY id DESC");
  if (!statement) return statement.error();
  std::vector<MailingId> mailings;
  for (;;) {
    const auto row = statement->Step();
    if (!row) return row.error();
    if (!*row) return mailings;
    mailings.push_back(statement->Int(0));
  }
}

Result<MailingId> AddMailing(platform::Database& database, const NewMailing& mailing) {
  auto statement = database.Prepare(kAddMailing);
  if (!statement) return statement.error();
  int parameter = 0;
  for (const std::string* text : {&mailing.subject, &mailing.group, &mailing.inputs}) {
    if (auto bound = statement->BindView(++parameter, *text); !bound) return bound.error();
  }
  if (auto done = statement->Run(); !done) return done.error();
  return database.LastInsertId();
}

Result<void> SetRecipients(platform::Database& database, MailingId mailing, std::int64_t first,
                           std::int64_t recipients) {
  auto statement = database.Prepare("UPDATE mailings SET first = ?, recipients = ? WHERE id = ?");
  if (!statement) return statement.error();
  int parameter = 0;
  for (const std::int64_t number : {first, recipients, mailing}) {
    if (auto bound = statement->Bind(++parameter, number); !bound) return bound;
  }
  return statement->Run();
}

Result<RunId> AddRun(platform::Database& database, const StoredRun& run, std::int64_t number) {
  auto statement = database.Prepare(kAddRun);
  if (!statement) return statement.error();
  const std::int64_t began = run.entry.began.time_since_epoch().count();
  for (const auto& [parameter, value] : {std::pair{1, run.entry.mailing},
                                         {2, number},
                                         {3, static_cast<std::int64_t>(run.entry.kind)},
                                         {6, began},
                                         {7, run.entry.recipients}}) {
    if (auto bound = statement->Bind(parameter, value); !bound) return bound.error();
  }
  if (auto bound = statement->BindView(4, run.entry.history); !bound) return bound.error();
  if (auto bound = statement->BindView(5, run.boot); !bound) return bound.error();
  if (auto bound = statement->BindView(8, run.entry.pace); !bound) return bound.error();
  if (auto done = statement->Run(); !done) return done.error();
  const RunId id = database.LastInsertId();
  // They change from now on.
  auto counts = database.Prepare("UPDATE mailings SET counts = NULL WHERE id = ?");
  if (!counts) return counts.error();
  if (auto bound = counts->Bind(1, run.entry.mailing); !bound) return bound.error();
  if (auto done = counts->Run(); !done) return done.error();
  return id;
}

Result<void> EndRun(platform::Database& database, RunId run, std::int64_t when, const MailingCounts& counts) {
  auto ended = database.Prepare("UPDATE runs SET ended = ?2 WHERE id = ?1");
  if (!ended) return ended.error();
  if (auto bound = ended->Bind(1, run); !bound) return bound;
  if (auto bound = ended->Bind(2, when); !bound) return bound;
  if (auto done = ended->Run(); !done) return done;
  auto counted =
      database.Prepare("UPDATE mailings SET counts = ?2 WHERE id = (SELECT mailing FROM runs WHERE id = ?1)");
  if (!counted) return counted.error();
  const std::string octets = Octets(counts);
  if (auto bound = counted->Bind(1, run); !bound) return bound;
  if (auto bound = counted->BindBytes(2, octets); !bound) return bound;
  return counted->Run();
}

Result<void> ForgetMailing(platform::Database& database, MailingId mailing) {
  struct Row {
    const char* sql;
    std::int64_t from;
    std::int64_t to;
  };
  for (const Row& row :
       {Row{"DELETE FROM rows WHERE id >= ? AND id < ?", BlockKey(mailing, 0), BlockKey(mailing + 1, 0)},
        Row{"DELETE FROM states WHERE id >= ? AND id < ?", BlockKey(mailing, 0), BlockKey(mailing + 1, 0)},
        Row{"DELETE FROM words WHERE id >= ? AND id < ?", WordsKey(mailing, 0), WordsKey(mailing + 1, 0)},
        Row{"DELETE FROM runs WHERE mailing >= ? AND mailing < ?", mailing, mailing + 1},
        Row{"DELETE FROM mailings WHERE id >= ? AND id < ?", mailing, mailing + 1}}) {
    auto statement = database.Prepare(row.sql);
    if (!statement) return statement.error();
    if (auto bound = statement->Bind(1, row.from); !bound) return bound;
    if (auto bound = statement->Bind(2, row.to); !bound) return bound;
    if (auto done = statement->Run(); !done) return done;
  }
  return {};
}

Doubt DoubtOf(const StoredRun& last, bool in_hand, const std::string& boot) {
  if (last.entry.ended || in_hand) return Doubt::kNobody;
  // Where the system does not tell, the worst is assumed.
  return last.boot == boot && !boot.empty() ? Doubt::kByKill : Doubt::kByPowerLoss;
}

ResultState StateIn(Doubt doubt, const char* record) {
  const ResultState state = StateAt(record);
  if (doubt == Doubt::kNobody) return state;
  return state == ResultState::kInFlight || IsReservedAt(record) ? ResultState::kUnknown : state;
}

Result<MailingCounts> CountStates(StateBlocks& blocks, Doubt doubt) {
  MailingCounts counts{};
  const auto count = [&](std::int64_t, std::string_view octets) -> Result<bool> {
    for (std::size_t at = 0; at < octets.size(); at += kRecordSize) {
      const ResultState state = StateIn(doubt, octets.data() + at);
      ++counts.states[static_cast<std::size_t>(state)];
      counts.tried_again += IsTriedAgain(state, octets.data() + at) ? 1 : 0;
    }
    return true;
  };
  if (auto walked = blocks.Walk(0, count); !walked) return walked.error();
  return counts;
}

const char* ReasonOf(Doubt doubt, ResultState state) {
  if (doubt == Doubt::kByPowerLoss) return "The computer stopped before it was kept what became of this message.";
  return state == ResultState::kInFlight ? "The program ended before the server's answer came."
                                         : "What the program last kept of this message is lost.";
}

}  // namespace quillcast::run

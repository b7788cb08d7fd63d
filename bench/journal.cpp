// What the journal of a run costs while the run goes on and what it tells afterwards, against a table of the same
// results with a row for each recipient and an index of the states.
//   bench_journal FOLDER RECIPIENTS
#include <fmt/format.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "run/journal/sqlite_run_journal.h"

namespace quillcast {
namespace {

namespace fs = std::filesystem;
using run::ResultState;

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

// Of all threads.
double CpuNow() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double Seconds(const std::function<void()>& work) {
  const double begin = Now();
  work();
  return Now() - begin;
}

void Tell(const char* what, double seconds) { fmt::print("{:<46} {:9.1f} ms\n", what, 1e3 * seconds); }

template <typename T>
T Take(Result<T> result) {
  if (!result) {
    fmt::print(stderr, "{}\n", Describe(result.error()));
    std::exit(1);
  }
  if constexpr (!std::is_void_v<T>) return *std::move(result);
}

long PeakMiB() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kib = 0;
    if (word == "VmHWM:" && status >> kib) return kib / 1024;
  }
  return -1;
}

double SizeOf(const fs::path& folder) {
  double size = 0;
  for (const auto& entry : fs::directory_iterator(folder)) size += static_cast<double>(entry.file_size());
  return size;
}

// Names and towns as lists of customers have them.
class Rows final : public recipients::RowSource {
 public:
  explicit Rows(std::int64_t count) : count_(count) {}
  Result<bool> Next(recipients::Recipient& row) override {
    if (next_ > count_) return false;
    const std::int64_t at = next_++;
    row.values[0] = fmt::format("user{}.{}@example{}.org", at * 2654435761 % 4294967296, at, at % 50);
    row.values[2] = fmt::format("First{}", at % 997);
    row.values[3] = fmt::format("Last{}", at % 9973);
    row.values[6] = fmt::format("Town{}", at % 211);
    return true;
  }

 private:
  std::int64_t count_;
  std::int64_t next_ = 1;
};

// One in a hundred is deferred, one in a hundred refused; each queue has a number of its own.
smtp::Outcome OutcomeOf(std::int64_t position) {
  using smtp::ResultCode;
  if (position % 100 == 7) {
    return {smtp::State::kDeferred,
            ResultCode::kRecipientRefused,
            {450, "4.2.0", fmt::format("<user{}@example.org>: Recipient address rejected: Greylisted", position)},
            ""};
  }
  if (position % 100 == 8) {
    return {smtp::State::kRefused,
            ResultCode::kRecipientRefused,
            {550, "5.1.1", fmt::format("<user{}@example.org>: User unknown in local recipient table", position)},
            ""};
  }
  const auto number = static_cast<std::uint64_t>(position) * 0x9E3779B97F4A7C15ULL >> 28;
  return {smtp::State::kSent, ResultCode::kSuccess, {250, "2.0.0", fmt::format("Ok: queued as {:X}", number)}, ""};
}

// Sends to so many in groups: the results of one group are told with the marks of the next.
void Send(run::JournalledRun& run, std::int64_t count, std::int64_t group) {
  recipients::Recipient row;
  std::vector<std::int64_t> before;
  std::vector<std::int64_t> now;
  for (std::int64_t sent = 0; sent < count || !before.empty();) {
    now.clear();
    for (std::int64_t i = 0; i < group && sent < count; ++i, ++sent) {
      std::int64_t position = 0;
      if (!Take(run.Next(row, position))) break;
      run.GoesOut(position);
      now.push_back(position);
    }
    for (const std::int64_t position : before) run.Settled(position, OutcomeOf(position));
    Take(run.Record());
    before.swap(now);
  }
}

void Measure(const char* who, std::int64_t count, std::int64_t group, const std::function<void()>& send) {
  const double cpu = CpuNow();
  const double seconds = Seconds(send);
  const auto people = static_cast<double>(count);
  fmt::print("{:<8} Record of {:3}: {:6.2f} us of work a recipient, {:6.2f} us with the waits for the disk\n", who,
             group, 1e6 * (CpuNow() - cpu) / people, 1e6 * seconds / people);
}

struct Part {
  std::int64_t group;
  std::int64_t count;
};

// The peer: marks and results as rows are updated, and each commit is left to the system as ours is.
class PlainTable {
 public:
  PlainTable(const fs::path& file, std::int64_t count)
      : database_(Take(platform::Database::Open(file, platform::OpenMode::kCreate))) {
    Take(
        database_.Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                          "CREATE TABLE results(position INTEGER PRIMARY KEY, state INTEGER NOT NULL, attempts INTEGER,"
                          " code INTEGER, time INTEGER, reply INTEGER, enhanced TEXT, words TEXT);"
                          "CREATE INDEX states ON results(state)"));
    auto transaction = Take(platform::Transaction::Begin(database_));
    auto insert = Take(database_.Prepare("INSERT INTO results(position, state) VALUES(?, 5)"));
    for (std::int64_t position = 1; position <= count; ++position) {
      Take(insert.Bind(1, position));
      Take(insert.Run());
      insert.Reset();
    }
    Take(transaction.Commit());
  }

  void Send(std::int64_t count, std::int64_t group) {
    auto mark = Take(database_.Prepare("UPDATE results SET state = 6 WHERE position = ?"));
    auto settle =
        Take(database_.Prepare("UPDATE results SET state = ?2, attempts = 1, code = ?3, time = 1783069507, reply = ?4, "
                               "enhanced = ?5, words = ?6 "
                               "WHERE position = ?1"));
    std::vector<std::int64_t> before;
    std::vector<std::int64_t> now;
    for (std::int64_t sent = 0; sent < count || !before.empty();) {
      now.clear();
      auto transaction = Take(platform::Transaction::Begin(database_));
      for (std::int64_t i = 0; i < group && sent < count; ++i, ++sent) {
        now.push_back(++next_);
        Take(mark.Bind(1, next_));
        Take(mark.Run());
        mark.Reset();
      }
      for (const std::int64_t position : before) Settle(settle, position);
      Take(transaction.Commit());
      before.swap(now);
    }
  }

  void Count() {
    auto count = Take(database_.Prepare("SELECT state, count(*) FROM results GROUP BY state"));
    while (Take(count.Step())) {
    }
  }

 private:
  static void Settle(platform::Statement& settle, std::int64_t position) {
    const smtp::Outcome outcome = OutcomeOf(position);
    Take(settle.Bind(1, position));
    Take(settle.Bind(2, static_cast<std::int64_t>(outcome.state)));
    Take(settle.Bind(3, static_cast<std::int64_t>(outcome.code)));
    Take(settle.Bind(4, std::int64_t{outcome.reply.code}));
    Take(settle.Bind(5, outcome.reply.enhanced));
    Take(settle.Bind(6, outcome.reply.text));
    Take(settle.Run());
    settle.Reset();
  }

  platform::Database database_;
  std::int64_t next_ = 0;
};

// Pages of these tables, a recipient.
double OctetsOf(const fs::path& file, const char* tables, std::int64_t count) {
  auto database = Take(platform::Database::Open(file, platform::OpenMode::kReadWrite));
  auto size = Take(database.Prepare(fmt::format("SELECT sum(pgsize) FROM dbstat WHERE name IN ({})", tables)));
  Take(size.Step());
  return static_cast<double>(size.Int(0)) / static_cast<double>(count);
}

void Ask(const run::JournalPlace& place, std::int64_t count) {
  std::unique_ptr<run::SqliteRunJournal> journal;
  const auto open_and_list = [&] {
    journal = Take(run::SqliteRunJournal::Open(place));
    if (Take(journal->List()).mailings.front().counts[0] < count * 97 / 100) std::exit(2);
  };
  Tell("open and list", Seconds(open_and_list));
  for (const auto& [name, state, skip, most] :
       {std::tuple{"the first 50 deferred", ResultState::kDeferred, std::int64_t{0}, std::int64_t{50}},
        {"the last 50 refused", ResultState::kRefused, count / 100 - 50, std::int64_t{50}},
        {"all who were sent to", ResultState::kSent, std::int64_t{0}, count}}) {
    std::int64_t seen = 0;
    const std::int64_t enough = most;
    Tell(name, Seconds([&, state = state, skip = skip] {
           Take(journal->Visit(1, run::SetOf({state}), skip,
                               [&](const run::JournalRow&) -> Result<bool> { return ++seen < enough; }));
         }));
  }
}

void MeasureAll(const fs::path& folder, std::int64_t count) {
  const std::vector<Part> parts = {{1, count / 4}, {8, count / 4}, {100, count - count / 4 * 2}};
  const platform::SystemClock clock;
  run::SystemDisk disk;
  fs::create_directories(folder / "ours");
  const run::JournalPlace place{.file = folder / "ours/runs.db", .clock = &clock, .disk = &disk};
  auto journal = Take(run::SqliteRunJournal::Open(place));
  std::unique_ptr<run::JournalledRun> run;
  Rows rows(count);
  Tell("begin", Seconds([&] { run = Take(journal->Begin({"Subject", "Group", "inputs", {}}, rows, {}, {"base"})); }));
  for (const Part& part : parts) Measure("ours", part.count, part.group, [&] { Send(*run, part.count, part.group); });
  run.reset();
  Tell("count a run that was cut off", Seconds([&] { Take(journal->List()); }));
  Tell("go on with the deferred, to the first of them", Seconds([&] {
         run = Take(journal->GoOn(1, run::RunKind::kRetry, run::SetOf({ResultState::kDeferred}), {"base"}));
         Send(*run, 1, 1);
       }));
  const std::int64_t left = count / 100 - 1;
  Measure("ours, one in a hundred,", left, 1, [&] { Send(*run, left, 1); });
  Tell("end", Seconds([&] { Take(run->End()); }));
  run.reset();
  journal.reset();
  Ask(place, count);
  fmt::print("states and words {:.1f} octets a recipient, the frozen rows {:.1f}; peak memory {} MiB\n",
             OctetsOf(place.file, "'states', 'words'", count), OctetsOf(place.file, "'rows'", count), PeakMiB());
  journal = Take(run::SqliteRunJournal::Open(place));
  Tell("forget", Seconds([&] { Take(journal->Forget(1)); }));
  fmt::print("left of it {:.0f} octets\n", SizeOf(folder / "ours"));

  fs::create_directories(folder / "plain");
  PlainTable plain(folder / "plain/results.db", count);
  for (const Part& part : parts) Measure("plain", part.count, part.group, [&] { plain.Send(part.count, part.group); });
  Tell("plain: count", Seconds([&] { plain.Count(); }));
  fmt::print("plain: {:.1f} octets a recipient\n", OctetsOf(folder / "plain/results.db", "'results', 'states'", count));
}

}  // namespace
}  // namespace quillcast

int main(int argc, char** argv) {
  if (argc != 3) return 64;
  quillcast::MeasureAll(argv[1], std::atoll(argv[2]));
  return 0;
}

// What the journal of a run costs, and what it tells, against a plain table with a row for each recipient.
//   bench_journal FOLDER RECIPIENTS
#include <fmt/format.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "run/journal/sqlite_run_journal.h"

namespace quillcast {
namespace {

namespace fs = std::filesystem;

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

double Seconds(const std::function<void()>& work) {
  const double begin = Now();
  work();
  return Now() - begin;
}

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

recipients::Recipient RowAt(std::int64_t position) {
  recipients::Recipient row;
  row.values[0] = fmt::format("user{}.{}@example{}.org", position * 2654435761 % 4294967296, position, position % 50);
  row.values[2] = fmt::format("First{}", position % 997);
  row.values[3] = fmt::format("Last{}", position % 9973);
  row.values[6] = fmt::format("Town{}", position % 211);
  return row;
}

class Rows final : public recipients::RowSource {
 public:
  explicit Rows(std::int64_t count) : count_(count) {}
  Result<bool> Next(recipients::Recipient& recipient) override {
    if (next_ > count_) return false;
    recipient = RowAt(next_++);
    return true;
  }

 private:
  std::int64_t count_;
  std::int64_t next_ = 1;
};

// One in a hundred is deferred, one in a hundred refused.
smtp::Outcome OutcomeOf(std::int64_t position) {
  smtp::Outcome outcome{smtp::State::kSent, smtp::ResultCode::kSuccess, {250, "2.0.0", ""}, "", true};
  outcome.reply.text = fmt::format("Ok: queued as {:X}", position * 40503 % 4294967296);
  if (position % 100 == 7) {
    outcome = {smtp::State::kDeferred,
               smtp::ResultCode::kRecipientRefused,
               {450, "4.2.0", fmt::format("<user{}@example.org>: Recipient address rejected: Greylisted", position)},
               "",
               true};
  } else if (position % 100 == 8) {
    outcome = {smtp::State::kRefused,
               smtp::ResultCode::kRecipientRefused,
               {550, "5.1.1", fmt::format("<user{}@example.org>: User unknown in local recipient table", position)},
               "",
               true};
  }
  return outcome;
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

double CpuSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

std::uintmax_t SizeOf(const fs::path& folder) {
  std::uintmax_t size = 0;
  for (const auto& entry : fs::directory_iterator(folder)) size += entry.file_size();
  return size;
}

void Measure(const fs::path& folder, std::int64_t count) {
  const platform::SystemClock clock;
  run::SystemDisk disk;
  const run::JournalPlace place{.file = folder / "runs.db", .clock = &clock, .disk = &disk};
  auto journal = Take(run::SqliteRunJournal::Open(place));
  std::unique_ptr<run::JournalledRun> run;
  Rows rows(count);
  fmt::print("Begin {} recipients: {:.2f} s\n", count, Seconds([&] {
               run = Take(journal->Begin({"Subject", "Group", "inputs", {}}, rows, {}, "base"));
             }));
  fmt::print("first Record: {:.1f} ms\n", 1e3 * Seconds([&] { Send(*run, 1, 1); }));
  const auto frozen = SizeOf(folder);
  std::int64_t left = count - 1;
  for (const std::int64_t group : {1, 8, 100}) {
    const std::int64_t here = group == 100 ? left : count / 4;
    left -= here;
    const double cpu = CpuSeconds();
    const double seconds = Seconds([&] { Send(*run, here, group); });
    fmt::print("Record of {:3}: {:6.2f} us each, {:5.2f} us a recipient; {:5.2f} us of both threads\n", group,
               1e6 * seconds * static_cast<double>(group) / static_cast<double>(here),
               1e6 * seconds / static_cast<double>(here), 1e6 * (CpuSeconds() - cpu) / static_cast<double>(here));
  }
  fmt::print("End: {:.1f} ms\n", 1e3 * Seconds([&] { Take(run->End()); }));
  run.reset();
  for (int i = 0; i < 2; ++i) {
    fmt::print("open and List: {:.1f} ms\n", 1e3 * Seconds([&] {
                                               journal.reset();
                                               journal = Take(run::SqliteRunJournal::Open(place));
                                               const auto list = Take(journal->List());
                                               if (list.front().counts[0] < count * 97 / 100) std::exit(2);
                                             }));
  }
  fmt::print("file after all: {:.1f} MB, {:.1f} octets a recipient\n", static_cast<double>(SizeOf(folder)) / 1e6,
             static_cast<double>(SizeOf(folder)) / static_cast<double>(count));
  (void)frozen;
  using run::ResultState;
  for (const auto& [name, state, skip] : {std::tuple{"first 50 deferred", ResultState::kDeferred, std::int64_t{0}},
                                          {"last 50 refused", ResultState::kRefused, count / 100 - 50},
                                          {"all", ResultState::kSent, std::int64_t{0}}}) {
    std::int64_t seen = 0;
    const double seconds = Seconds([&] {
      Take(journal->Visit(1, run::SetOf({state}), skip, [&](const run::JournalRow&) -> Result<bool> {
        return ++seen < 50 || state == ResultState::kSent;
      }));
    });
    fmt::print("Visit {}: {} in {:.1f} ms\n", name, seen, 1e3 * seconds);
  }
  fmt::print("GoOn with the deferred, to the first Record: {:.1f} ms\n",
             1e3 * Seconds([&] {
               run = Take(journal->GoOn(1, run::RunKind::kRetry, run::SetOf({ResultState::kDeferred}), "base"));
               Send(*run, 1, 1);
             }));
  const double seconds = Seconds([&] { Send(*run, count / 100 - 1, 1); });
  fmt::print("sparse Record of 1: {:.2f} us each\n", 1e6 * seconds / static_cast<double>(count / 100 - 1));
  Take(run->End());
  run.reset();
  fmt::print("peak memory: {} MiB\n", PeakMiB());
  fmt::print("Forget: {:.2f} s\n", Seconds([&] { Take(journal->Forget(1)); }));
  fmt::print("left: {} octets\n", SizeOf(folder));
}

}  // namespace
}  // namespace quillcast

int main(int argc, char** argv) {
  if (argc != 3) return 64;
  quillcast::Measure(argv[1], std::atoll(argv[2]));
  return 0;
}

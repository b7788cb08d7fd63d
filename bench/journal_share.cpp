// One run over SMTP to a server on this computer, with its journal or without it:
//   bench_journal_share FOLDER PORT RECIPIENTS CONNECTIONS PIPELINE with|without
// Prints how many messages went out in a second.
#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/entropy.h"
#include "run/journal/sqlite_run_journal.h"
#include "run/journal/unjournalled_run.h"
#include "run/sending_run.h"

namespace quillcast {
namespace {

namespace fs = std::filesystem;

class Rows final : public recipients::RowSource {
 public:
  explicit Rows(std::int64_t count) : count_(count) {}
  Result<bool> Next(recipients::Recipient& row) override {
    if (next_ > count_) return false;
    row.values[0] = fmt::format("user{}@example.org", next_);
    row.values[2] = fmt::format("First{}", next_ % 997);
    ++next_;
    return true;
  }
  std::optional<std::int64_t> size() const override { return count_; }

 private:
  std::int64_t count_;
  std::int64_t next_ = 1;
};

struct Quiet final : run::RunListener {
  void ReportLine(std::string_view) override {}
  void Finished(const run::RecipientResult&) override {}
  void Progress(std::int64_t, std::int64_t, std::uint64_t, std::uint64_t) override {}
  void Note(const Sentence& sentence) override { fmt::print(stderr, "{}\n", sentence.InEnglish()); }
};

template <typename T>
T Take(Result<T> result) {
  if (result) return *std::move(result);
  fmt::print(stderr, "{}\n", Describe(result.error()));
  std::exit(1);
}

// About 4 KiB.
document::MessageDocument Letter() {
  document::MessageDocument letter;
  letter.subject = "Spring papers for $*MergeFirstName*$";
  letter.html = "<p>Dear $*MergeFirstName*$</p>";
  while (letter.html.size() < 4000) letter.html += "<p>Feather travels far, Meadow holds real petals.</p>\n";
  return letter;
}

int Send(const fs::path& folder, std::uint16_t port, std::int64_t count, std::size_t connections, bool pipeline,
         bool is_journalled) {
  const platform::SystemClock clock;
  platform::SystemEntropy entropy;
  const platform::CancelToken cancel;
  message::MessageOptions options;
  options.sender_address = *smtp::Address::From("ada@example.org");
  const message::MessageTemplate letter(Letter(), options, folder, clock, entropy);
  smtp::ClientOptions way;
  way.servers = {{"127.0.0.1", port}};
  way.connections = connections;
  way.pipeline = pipeline;
  run::SmtpCarrier carrier(way, clock, cancel);
  run::SystemDisk disk;
  const run::JournalPlace place{.file = folder / "runs.db", .clock = &clock, .disk = &disk};
  const auto journal = Take(run::SqliteRunJournal::Open(place));
  const run::BeginRun begin = [&](const std::string& history) -> Result<std::unique_ptr<run::JournalledRun>> {
    auto rows = std::make_unique<Rows>(count);
    if (is_journalled) return journal->Begin({"Subject", "Group", "inputs", {}}, *rows, {}, {history});
    return std::unique_ptr<run::JournalledRun>(std::make_unique<run::UnjournalledRun>(std::move(rows), std::nullopt));
  };
  auto entry = Take(run::BeginHistoryEntry(folder, clock, "Hello"));
  Quiet quiet;
  const auto began = std::chrono::steady_clock::now();
  const auto summary =
      run::SendLetters({letter, count, {}, begin, {}, carrier, cancel, clock}, std::move(entry), quiet);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
  fmt::print("{}\n", static_cast<double>(count) / took.count());
  return summary.sent == count ? 0 : 1;
}

}  // namespace
}  // namespace quillcast

int main(int argc, char** argv) {
  if (argc != 7) return 64;
  return quillcast::Send(argv[1], static_cast<std::uint16_t>(std::atoi(argv[2])), std::atoll(argv[3]),
                         static_cast<std::size_t>(std::atoi(argv[4])), std::string_view(argv[5]) == "1",
                         std::string_view(argv[6]) == "with");
}

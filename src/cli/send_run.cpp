#include "cli/send_run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include "platform/power.h"
#include "platform/text.h"
#include "run/file_carrier.h"
#include "run/run_words.h"
#include "run/skipped_ones.h"
#include "smtp/outcome_text.h"

namespace quillcast::cli {
namespace {

constexpr std::int64_t kMostNotTried = 20;  // who are named to people
constexpr auto kWaitAtFirst = std::chrono::seconds(10);
constexpr auto kLongWait = std::chrono::minutes(10);

// Tells the person at the terminal, or the program behind it, how a run goes.
class SendListener final : public run::RunListener {
 public:
  SendListener(Output& output, const ToTell& told, const MailingOptions& options, const platform::Clock& clock)
      : output_(output), told_(told), options_(options), clock_(clock) {}

  void Began(const std::filesystem::path&) override {
    for (const auto& sentence : told_.first) output_.Note(sentence.InEnglish());
  }
  void ReportLine(std::string_view) override {}  // the report is in the history
  void Note(const Sentence& sentence) override {
    if (std::ranges::count(told_.before, sentence) == 0) output_.Note(sentence.InEnglish());
  }

  void Finished(const run::RecipientResult& result) override {
    is_anybody_done_ = true;
    const auto& outcome = result.outcome;
    if (output_.json) {
      nlohmann::ordered_json object = {{"position", result.position},
                                       {"address", result.address},
                                       {"state", WordOf(outcome.state)},
                                       {"code", static_cast<int>(outcome.code)},
                                       {"reply", smtp::ReplyText(outcome.reply)},
                                       {"reason", outcome.reason}};
      if (result.again || result.tries > 1) {
        object["try"] = result.tries;
        object["again"] = result.again;
      }
      output_.Object(object);
    }
    if (outcome.state == smtp::State::kSent && result.tries == 1) return;
    output_.EndProgress();
    const std::string what = outcome.state == smtp::State::kSent ? fmt::format("sent, at try {}", result.tries)
                                                                 : run::WhatBecameOf(outcome, options_.delivery());
    output_.Note(fmt::format("#{} {}: {}{}", result.position, platform::Printable(result.address, 100), what,
                             result.again ? " (It is tried again.)" : ""));
  }

  bool GoOn(const smtp::Outcome& refusal, int times, std::int64_t) override {
    if (options_.keep_going) return true;
    output_.EndProgress();
    output_.Note(run::RefusedTheSame(refusal, times, run::Then::kStops).InEnglish());
    output_.Note("--keep-going tries every recipient all the same.");
    return false;
  }
  void NotTried(std::int64_t position, const std::string& address, run::ResultState stays) override {
    const bool was_tried = stays != run::ResultState::kNotTried;
    nlohmann::ordered_json object = {{"position", position}, {"address", address}, {"state", "not tried"}};
    if (was_tried) object["stays"] = run::Name(stays);
    output_.Object(object);
    if (++not_tried_ > kMostNotTried) {
      if (first_not_named_ == 0) first_not_named_ = position;
      last_not_tried_ = position;
      return;
    }
    output_.EndProgress();
    output_.Note(fmt::format("#{} {}: not tried{}", position, platform::Printable(address, 100),
                             was_tried ? fmt::format(", and stays {}", run::Name(stays)) : ""));
  }
  // Those beyond the first few, who would push what failed out of sight; --json and the history name each.
  void CountNotTried() {
    if (not_tried_ <= kMostNotTried) return;
    const std::int64_t more = not_tried_ - kMostNotTried;
    output_.Note(fmt::format("and {} more: not tried (from #{} to #{})", platform::WithThousands(more),
                             first_not_named_, last_not_tried_));
  }

  void Waits(const Sentence& why, run::Moment until) override {
    std::fflush(stdout);  // who reads the results has those that there are while nothing goes on
    if (is_log_) NoteWait(why, until);
    output_.Progress(fmt::format("{}. {}", HowFar(), run::WaitsUntil(why, until, clock_).InEnglish()));
  }
  void WayLost(const Sentence& why, run::Moment until) override {
    if (!std::exchange(is_way_lost_, true) && is_log_) {
      output_.Note(run::WaitsUntil(why, until, clock_).InEnglish());
    }
    told_until_ = until;
    Waits(why, until);
  }
  void WayFound() override {
    is_way_lost_ = false;
    if (is_log_) output_.Note("The server answers again, and the run goes on.");
  }
  void Progress(std::int64_t done, std::int64_t total, std::uint64_t, std::uint64_t) override {
    done_ = done;
    total_ = total;
    if (!is_log_) output_.Progress(HowFar());
  }

 private:
  // Who reads a log is told why nothing goes on, in a line for each long wait, and for one before the first message.
  void NoteWait(const Sentence& why, run::Moment until) {
    const auto now = clock_.Now();
    if (now < told_until_ || until - now < (is_anybody_done_ ? kLongWait : kWaitAtFirst)) return;
    told_until_ = until;
    output_.Note(run::WaitsUntil(why, until, clock_).InEnglish());
  }
  std::string HowFar() const {
    return fmt::format("{} of {}", platform::WithThousands(done_), platform::Counted(total_, "message", "messages"));
  }
  const char* WordOf(smtp::State state) const {
    return state == smtp::State::kSent ? run::Name(options_.delivery()) : smtp::Name(state);
  }

  Output& output_;
  const ToTell& told_;
  const MailingOptions& options_;
  const platform::Clock& clock_;
  std::int64_t done_ = 0;  // of the messages
  std::int64_t total_ = 0;
  const bool is_log_ = output_.json || ::isatty(STDERR_FILENO) == 0;  // where Progress shows nothing
  run::Moment told_until_;                                            // the end of the wait that was told last
  bool is_anybody_done_ = false;
  bool is_way_lost_ = false;
  std::int64_t not_tried_ = 0;
  std::int64_t first_not_named_ = 0;  // of those not tried; between it and the last others may have their result
  std::int64_t last_not_tried_ = 0;
};

int TellSummary(Context& context, const profile::Folders& folders, const run::RunSummary& summary) {
  nlohmann::ordered_json counts = {
      {run::Name(summary.delivery), summary.sent}, {"failed", summary.failed}, {"not_tried", summary.not_tried}};
  if (summary.skipped > 0) counts[run::kSkipped] = summary.skipped;
  if (summary.retries_left > 0) counts["not_tried_again"] = summary.retries_left;
  if (summary.not_their_doing > 0) counts["not_their_doing"] = summary.not_their_doing;
  counts["history"] = summary.history;
  context.output.Object(counts);
  context.output.Line(run::CountsOf(summary).InEnglish());
  context.output.Line(fmt::format("Report: {}", run::ReportIn(folders.History(), summary.history).string()));
  for (const Sentence& left : run::LeftBy(summary)) context.output.Note(left.InEnglish());
  if (summary.run != 0 && summary.left() > 0) {
    context.output.Note(fmt::format("quillcast runs resume {} goes on with those who are {}.", summary.run,
                                    summary.is_retry ? "to be tried again" : "left"));
  }
  if (summary.is_retry && summary.not_tried > 0) {
    context.output.Note(
        fmt::format("Who was not tried stays what the run before left: quillcast runs retry {}, with the "
                    "same --state and --reply, goes on.",
                    summary.run));
  }
  if (summary.stopped) return context.output.Fail(*summary.stopped);
  if (!summary.reached_its_end()) return ExitCode(Failure::kTryAgain);
  return summary.everybody_got_it() ? 0 : 1;
}

Result<run::KeepLetter> Files(const Context& context, const profile::Folders& folders, const MailingOptions& options) {
  if (!options.to_folder.empty()) return run::IntoFolder(options.to_folder, folders.OwnFiles());
  return run::IntoMbox(options.to_mbox, folders.OwnFiles(), context.clock);
}

Result<run::RunSummary> Carry(const Context& context, const profile::Folders& folders, run::PreparedRun& prepared,
                              const std::optional<run::PartialRange>& range, const MailingOptions& options,
                              SendListener& listener) {
  if (options.delivery() == run::Delivery::kSent) {
    platform::clsExitWindows power(platform::PowerPlacesOf(context.environment));
    const auto awake = power.StayAwake(run::kKeepsAwake);
    return prepared.Run(range, listener);
  }
  auto files = Files(context, folders, options);
  if (!files) return files.error();
  run::FileCarrier carrier(*std::move(files), context.cancel);
  return prepared.Run(range, listener, carrier);
}

}  // namespace

int RunMailing(Context& context, const profile::Folders& folders, run::PreparedRun& prepared,
               const std::optional<run::PartialRange>& range, const ToTell& told, const MailingOptions& options) {
  const auto message = prepared.Message();
  if (!message) return context.output.Fail(message.error());
  if (const auto& trouble = (*message)->trouble()) {
    context.output.Note("Note: No message can be made. " + InOneLine(trouble->error));
  }
  SendListener listener(context.output, told, options, context.clock);
  const auto summary = Carry(context, folders, prepared, range, options, listener);
  context.output.EndProgress();
  if (!summary) return context.output.Fail(summary.error());
  listener.CountNotTried();
  return TellSummary(context, folders, *summary);
}

}  // namespace quillcast::cli

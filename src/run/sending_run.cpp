#include "run/sending_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "account/account_connection.h"
#include "platform/text.h"
#include "run/history.h"
#include "run/pre_flight.h"
#include "smtp/client/client.h"
#include "smtp/envelope_address.h"
#include "smtp/result_code.h"

namespace quillcast::run {
namespace {

// The report's name for a failure of ours, before any server was asked.
smtp::Outcome FailureOfOurs(smtp::ResultCode code, const Error& error) {
  return {.state = smtp::State::kFailed, .code = code, .reply = {}, .reason = Describe(error)};
}

// A recipient's message on its way.
struct Letter : smtp::Job {
  std::int64_t position = 0;
  std::string address;  // as stored
  message::RenderedMessage rendered;
};

// A row that failed before any server was asked, until the rows before it have their results.
struct OwnFailure {
  std::int64_t position = 0;
  std::string address;
  smtp::Outcome outcome;
  std::int64_t after = 0;  // how many letters were taken before it
};

// Takes the rows of the group one by one, from the store to the wire to the report.
class Run final : public smtp::JobSource {
 public:
  Run(const RunRequest& request, const RunPlace& place, RunListener& listener, HistoryEntry& entry)
      : request_(request),
        place_(place),
        listener_(listener),
        entry_(entry),
        template_(request.message),
        report_(std::move(entry.report), [&listener](std::string_view line) { listener.ReportLine(line); }),
        range_(request.range.value_or(PartialRange{1, request.recipients})) {}

  RunSummary Execute(const smtp::ClientOptions& options);

  smtp::Job* NextJob() override;
  void Finished(smtp::Job& job, const smtp::Outcome& outcome) override;
  void CaughtUp() override { Flush(); }
  void Connected(const smtp::Capabilities& offered) override;
  bool GoOn(const smtp::Outcome& refusal, int times) override;
  void LogLine(std::string_view line) override { report_.LogLine(line); }
  void Waiting() override { Flush(); }
  void Progress(std::uint64_t sent, std::uint64_t total) override {
    listener_.Progress(Done(), InRange(), sent, total);
  }

 private:
  std::int64_t Done() const { return summary_.sent + summary_.failed; }
  std::int64_t InRange() const { return range_.last - range_.first + 1; }
  bool MayGoOn() const { return place_.cancel.Requested() == platform::Stop::kNone && !summary_.stopped; }
  bool NextRow();
  std::optional<smtp::Outcome> RenderRow(Letter& letter);
  void KeepFirstMessage(const message::RenderedMessage& message);
  void SettleOwnFailures();
  void Settle(std::int64_t position, const std::string& address, const smtp::Outcome& outcome);
  void Flush();
  void NameThoseNotTried();
  void TellAboutPictures();

  const RunRequest& request_;
  const RunPlace& place_;
  RunListener& listener_;
  HistoryEntry& entry_;
  const message::MessageTemplate& template_;
  RunReport report_;
  PartialRange range_;
  RunSummary summary_;
  std::optional<recipients::RecipientCursor> rows_;
  recipients::Recipient row_;
  std::int64_t position_ = 0;
  std::vector<std::unique_ptr<Letter>> letters_;  // all that were ever needed at a time
  std::vector<Letter*> free_letters_;             // the one used last at the end, so that few are kept warm
  std::deque<OwnFailure> own_failures_;
  std::int64_t taken_ = 0;     // letters by the client
  std::int64_t finished_ = 0;  // of them
  bool first_message_kept_ = false;
  bool told_of_no_copy_ = false;
  bool told_of_notices_ = false;
};

RunSummary Run::Execute(const smtp::ClientOptions& options) {
  report_.Started(request_.recipients, request_.range);
  TellAboutPictures();
  Flush();  // what cannot be recorded is not begun
  auto rows = recipients::RecipientStore(place_.folders.Database(), {.cancel = &place_.cancel})
                  .ListRecipients(request_.group.id, request_.group.sort_sql, recipients::Reading::kCopy);
  if (rows) {
    rows_ = std::move(*rows);
    smtp::Client(options, place_.clock, place_.cancel).Run(*this);
  } else {
    if (place_.cancel.Requested() == platform::Stop::kNone) summary_.stopped = rows.error();
    // No copy, no run; but who is in the group can still be told.
    auto live = recipients::RecipientStore(place_.folders.Database(), {.lock_wait = std::chrono::seconds(1)})
                    .ListRecipients(request_.group.id, request_.group.sort_sql);
    if (live) rows_ = std::move(*live);
  }
  NameThoseNotTried();
  report_.Completed(summary_.sent, summary_.failed);
  Flush();
  summary_.history = entry_.base;
  summary_.cancelled = place_.cancel.Requested() != platform::Stop::kNone && Done() < InRange();
  summary_.not_tried = std::max<std::int64_t>(0, InRange() - Done());
  return summary_;
}

// The next row of the range, or false at its end.
bool Run::NextRow() {
  while (rows_ && position_ < range_.last) {
    const auto row = rows_->Next(row_);
    if (!row) summary_.stopped = row.error();
    if (!row || !*row) break;
    if (++position_ >= range_.first) return true;
  }
  rows_.reset();  // read again, it would begin anew
  return false;
}

smtp::Job* Run::NextJob() {
  if (free_letters_.empty()) free_letters_.push_back(letters_.emplace_back(std::make_unique<Letter>()).get());
  Letter* letter = free_letters_.back();
  while (MayGoOn() && NextRow()) {
    const auto failure = RenderRow(*letter);
    if (!failure) {
      free_letters_.pop_back();
      ++taken_;
      return letter;
    }
    own_failures_.push_back({position_, row_.email(), *failure, taken_});
    SettleOwnFailures();
  }
  return nullptr;
}

// Makes the row's letter; or says why it failed before any server was asked.
std::optional<smtp::Outcome> Run::RenderRow(Letter& letter) {
  if (const auto& trouble = template_.trouble()) return FailureOfOurs(trouble->code, trouble->error);
  const auto address = smtp::EnvelopeAddress(row_.email());
  if (!address) return FailureOfOurs(smtp::ResultCode::kRecipientRefused, address.error());
  const auto rendered = template_.Render(row_, *address, position_, letter.rendered);
  if (!rendered) return FailureOfOurs(smtp::ResultCode::kOutOfMemory, rendered.error());
  KeepFirstMessage(letter.rendered);
  letter.envelope = letter.rendered.envelope;
  letter.message = &letter.rendered;
  letter.position = position_;
  letter.address = row_.email();
  return {};
}

void Run::Finished(smtp::Job& job, const smtp::Outcome& outcome) {
  auto& letter = static_cast<Letter&>(job);
  if (letter.rendered.subject_not_encoded) report_.SubjectNotEncoded();
  Settle(letter.position, letter.address, outcome);
  free_letters_.push_back(&letter);
  ++finished_;
  SettleOwnFailures();
}

// Results stand in the order of the rows, so these wait for the letters that were taken before them.
void Run::SettleOwnFailures() {
  while (!own_failures_.empty() && own_failures_.front().after == finished_) {
    const OwnFailure& failure = own_failures_.front();
    Settle(failure.position, failure.address, failure.outcome);
    own_failures_.pop_front();
    if (taken_ == finished_) Flush();
  }
}

void Run::Settle(std::int64_t position, const std::string& address, const smtp::Outcome& outcome) {
  if (outcome.state == smtp::State::kSent) {
    ++summary_.sent;
    report_.Sent();
  } else {
    ++summary_.failed;
    report_.Failed(static_cast<std::int32_t>(outcome.code));
  }
  listener_.Finished({position, address, outcome});
}

// One write for all results that came together, before anything more is sent: after a kill the report still knows
// everybody whose result this process knew when it last spoke to the server.
void Run::Flush() {
  report_.Flush();
  if (report_.trouble() && !summary_.stopped) summary_.stopped = report_.trouble();
}

void Run::Connected(const smtp::Capabilities& offered) {
  if (told_of_notices_ || offered.dsn || !template_.asks_for_notice()) return;
  told_of_notices_ = true;
  listener_.Note(kNoNotices);
}

bool Run::GoOn(const smtp::Outcome& refusal, int times) {
  Flush();  // who is asked may read it
  return listener_.GoOn(refusal, times);
}

// Whatever ended the run: a cancel, a full disk, a refusal that nobody wanted to go on after.
void Run::NameThoseNotTried() {
  while (NextRow()) listener_.NotTried(position_, row_.email());
}

// The first that can be kept: what keeps one out (its size, a disk that is full for a moment) may let the next one in.
void Run::KeepFirstMessage(const message::RenderedMessage& message) {
  if (first_message_kept_) return;
  const auto kept =
      platform::ReplaceFile(entry_.message, [&](int fd) { return message::WriteMessage(message, fd, entry_.message); });
  first_message_kept_ = static_cast<bool>(kept);
  if (kept || std::exchange(told_of_no_copy_, true)) return;
  listener_.Note(fmt::format("The history has no copy of the first message. {} It keeps the first that it can.",
                             Describe(kept.error())));
}

void Run::TellAboutPictures() {
  const auto& troubles = template_.picture_troubles();
  if (troubles.empty()) return;
  report_.BodyNotLoaded(troubles.front().code);  // the body is loaded once and has one result
  for (const auto& trouble : troubles) {
    listener_.Note(fmt::format("{} The message goes out without it.", Describe(trouble)));
  }
}

}  // namespace

Result<RunSummary> SendToGroup(const RunRequest& request, const RunPlace& place, RunListener& listener) {
  const auto client_options = account::ClientOptionsOf(request.account);
  if (!client_options) return client_options.error();
  auto entry = BeginHistoryEntry(place.folders.History(), place.clock, request.subject);
  if (!entry) return entry.error();
  listener.Began(entry->report.path());
  return Run(request, place, listener, *entry).Execute(*client_options);
}

}  // namespace quillcast::run

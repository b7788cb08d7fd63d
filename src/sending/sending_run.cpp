#include "sending/sending_run.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"
#include "recipients/envelope_address.h"
#include "sending/history.h"
#include "sending/message_options.h"
#include "sending/send_status.h"
#include "smtp/client.h"

namespace quillcast::sending {
namespace {

// The report's name for a failure of ours, before any server was asked.
smtp::Outcome OwnFailure(smtp::ResultCode code, const Error& error) {
  return {.state = smtp::State::kFailed, .code = code, .reply = {}, .reason = Describe(error)};
}

// A recipient's message on its way.
struct Letter : smtp::Job {
  std::int64_t position = 0;
  std::string address;  // as stored
  RenderedMessage rendered;
};

// Takes the rows of the group one by one, from the store to the wire to the report.
class Run final : public smtp::Mailing {
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
  void LogLine(std::string_view line) override { report_.LogLine(line); }
  void Progress(std::uint64_t sent, std::uint64_t total) override {
    listener_.Progress(Done(), InRange(), sent, total);
  }

 private:
  std::int64_t Done() const { return summary_.sent + summary_.failed; }
  std::int64_t InRange() const { return range_.last - range_.first + 1; }
  bool MayGoOn() const { return place_.cancel.Requested() == platform::Stop::kNone && !summary_.stopped; }
  bool NextRow();
  std::optional<smtp::Outcome> RenderRow();
  void KeepFirstMessage();
  void Settle(std::int64_t position, const std::string& address, const smtp::Outcome& outcome);
  void TellAboutPictures();

  const RunRequest& request_;
  const RunPlace& place_;
  RunListener& listener_;
  HistoryEntry& entry_;
  const MessageTemplate& template_;
  RunReport report_;
  PartialRange range_;
  RunSummary summary_;
  std::optional<recipients::RecipientCursor> rows_;
  recipients::Recipient row_;
  std::int64_t position_ = 0;
  Letter letter_;
  bool first_message_kept_ = false;
};

RunSummary Run::Execute(const smtp::ClientOptions& options) {
  report_.Started(request_.recipients, request_.range);
  TellAboutPictures();
  report_.Flush();
  if (report_.trouble()) summary_.stopped = report_.trouble();  // what cannot be recorded is not begun
  auto rows = recipients::RecipientStore(place_.folders.Database())
                  .ListRecipients(request_.group.id, request_.group.sort_sql, recipients::Reading::kCopy);
  if (rows) {
    rows_ = std::move(*rows);
    smtp::Client(options, place_.clock, place_.cancel).Run(*this);
  } else {
    summary_.stopped = rows.error();
  }
  report_.Completed(summary_.sent, summary_.failed);
  report_.Flush();
  if (report_.trouble() && !summary_.stopped) summary_.stopped = report_.trouble();
  summary_.history = entry_.base;
  summary_.cancelled = place_.cancel.Requested() != platform::Stop::kNone && Done() < InRange();
  summary_.not_tried = std::max<std::int64_t>(0, InRange() - Done());
  return summary_;
}

// The next row of the range, or false at its end.
bool Run::NextRow() {
  do {
    const auto row = rows_->Next(row_);
    if (!row) summary_.stopped = row.error();
    if (!row || !*row) return false;
    ++position_;
  } while (position_ < range_.first);
  return position_ <= range_.last;
}

smtp::Job* Run::NextJob() {
  while (MayGoOn() && NextRow()) {
    const auto failure = RenderRow();
    if (!failure) return &letter_;
    Settle(position_, row_.email(), *failure);
  }
  return nullptr;
}

// Makes the row's letter; or says why it failed before any server was asked.
std::optional<smtp::Outcome> Run::RenderRow() {
  if (const auto& trouble = template_.trouble()) return OwnFailure(trouble->code, trouble->error);
  const auto address = recipients::EnvelopeAddress(row_.email());
  if (!address) return OwnFailure(smtp::ResultCode::kRecipientRefused, address.error());
  std::array<std::string, compose::kMergeFields.size()> changed;
  const auto rendered = template_.Render(compose::ValuesForMerge(row_, changed), *address,
                                         static_cast<std::uint64_t>(position_), letter_.rendered);
  if (!rendered) return OwnFailure(smtp::ResultCode::kOutOfMemory, rendered.error());
  if (letter_.rendered.subject_not_encoded) report_.SubjectNotEncoded();
  KeepFirstMessage();
  letter_.envelope = letter_.rendered.envelope;
  letter_.message = &letter_.rendered;
  letter_.position = position_;
  letter_.address = row_.email();
  return {};
}

void Run::Finished(smtp::Job& job, const smtp::Outcome& outcome) {
  const auto& letter = static_cast<const Letter&>(job);
  Settle(letter.position, letter.address, outcome);
}

void Run::Settle(std::int64_t position, const std::string& address, const smtp::Outcome& outcome) {
  if (outcome.state == smtp::State::kSent) {
    ++summary_.sent;
    report_.Sent();
  } else {
    ++summary_.failed;
    report_.Failed(static_cast<std::int32_t>(outcome.code));
  }
  // One write a message, so that after a kill the report still knows everybody who was served.
  report_.Flush();
  listener_.Finished({position, address, outcome});
  if (report_.trouble()) summary_.stopped = report_.trouble();
}

void Run::KeepFirstMessage() {
  if (first_message_kept_) return;
  first_message_kept_ = true;
  const auto kept =
      platform::ReplaceFile(entry_.message, [&](int fd) { return WriteMessage(letter_.rendered, fd, entry_.message); });
  if (!kept) listener_.Note(fmt::format("The history keeps no copy of the message. {}", Describe(kept.error())));
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
  const auto client_options = ClientOptionsOf(request.account);
  if (!client_options) return client_options.error();
  auto entry = BeginHistoryEntry(place.folders.History(), place.clock, request.subject);
  if (!entry) return entry.error();
  return Run(request, place, listener, *entry).Execute(*client_options);
}

}  // namespace quillcast::sending

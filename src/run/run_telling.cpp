#include "run/run_telling.h"

#include "smtp/envelope_address.h"

namespace quillcast::run {

void RunTelling::Progress(std::int64_t total, std::uint64_t sent, std::uint64_t size) {
  progress_told_ = Done();
  listener_.Progress(progress_told_, total, sent, size);
}

void RunTelling::CatchUpProgress(std::int64_t total) {
  if (progress_told_ != Done()) Progress(total, 0, 0);
}

void RunTelling::LogLine(std::string_view line, std::optional<std::int64_t> position) {
  if (!position) return report_.LogLine(line);
  lines_told_ = order_.IsNext(*position);
  if (lines_told_) return report_.LogLine(line);
  order_.At(*position).log.append(line).push_back('\n');
}

bool RunTelling::TellThoseReady() {
  if (lines_told_) return false;
  bool failed_here = false;
  while (const auto again = order_.TakeTriedAgain()) {
    failed_here = failed_here || again->stage == RecipientInOrder::Stage::kFailedHere;
    Tell(*again);
  }
  for (; order_.IsReady(); order_.Pop()) {
    failed_here = failed_here || order_.First().stage == RecipientInOrder::Stage::kFailedHere;
    Tell(order_.First());
  }
  return failed_here;
}

// Behind one that was left the run had ended, so that nobody fails there. Who was to be tried again and was not keeps
// the result that was told.
void RunTelling::Tell(const RecipientInOrder& recipient) {
  const bool failed_here = recipient.stage == RecipientInOrder::Stage::kFailedHere;
  if (recipient.stage == RecipientInOrder::Stage::kLeft && recipient.tries > 1) return;
  if (recipient.stage == RecipientInOrder::Stage::kLeft || (failed_here && !left_.empty())) {
    left_.push_back({recipient.position, recipient.address, recipient.before.state});
    return;
  }
  if (failed_here) run_->Settled(recipient.position, recipient.outcome);
  report_.LogLines(recipient.log);
  if (recipient.subject_not_encoded) report_.SubjectNotEncoded();
  Settle(recipient);
}

void RunTelling::Settle(const RecipientInOrder& recipient) {
  if (recipient.tries > 1) {
    --summary_.failed;
    --summary_.retries_left;
  }
  if (recipient.outcome.state == smtp::State::kSent) {
    ++summary_.sent;
    report_.Sent();
  } else {
    ++summary_.failed;
    if (recipient.outcome.state == smtp::State::kUnknown) ++summary_.unknown;
    report_.Failed(recipient.outcome);
  }
  const bool again = DeferRetry(recipient);
  if (again) ++summary_.retries_left;
  if (!again && smtp::IsOfSignIn(recipient.outcome)) ++summary_.not_their_doing;
  listener_.Finished({recipient.position, recipient.address, recipient.outcome, recipient.tries, again});
}

bool RunTelling::DeferRetry(const RecipientInOrder& recipient) {
  if (retries_ == nullptr || !Retries::IsWorthAnother(recipient.outcome)) return false;
  const auto address = smtp::EnvelopeAddress(recipient.address);
  return address &&
         retries_->Defer({recipient.position, DomainOf(address->domain()), recipient.tries, recipient.before.tries});
}

void RunTelling::TellThoseLeft() {
  for (const LeftRecipient& left : left_) NotTried(left);
}

void RunTelling::NotTried(const LeftRecipient& left) {
  if (++summary_.not_tried == 1) summary_.first_left = left.position;
  summary_.last = left.position;
  listener_.NotTried(left.position, left.address, left.stays);
}

void RunTelling::Flush() {
  report_.Flush();
  if (report_.trouble() && !summary_.stopped) summary_.stopped = report_.trouble();
}

}  // namespace quillcast::run

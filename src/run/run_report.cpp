#include "run/run_report.h"

#include <fmt/format.h>

#include "message/body_import.h"
#include "platform/text.h"
#include "run/run_words.h"
#include "run/sending_run.h"
#include "smtp/result_code.h"

namespace quillcast::run {
namespace {

struct Words {
  const char* started;
  const char* partly;
  const char* wholly;
  const char* one;
  const char* completed;
  const char* done;
};

constexpr Words kSentWords = {"Personal Sending process has been started.",
                              "Partial Sending to",
                              "Sending to",
                              smtp::kSentText,
                              "Personal Sending process has been completed.",
                              "sent"};
constexpr Words kWrittenWords = {"The messages are written into files. Nothing is sent.",
                                 "Partial writing for",
                                 "Writing for",
                                 "Message written.",
                                 "The messages have been written into files. Nothing was sent.",
                                 "written"};
constexpr const char* kPartlyWritten = "Not all messages have been written into files. Nothing was sent.";
constexpr const char* kNotWritten = "No message has been written into a file. Nothing was sent.";

// The lines of a run that is sent know no singular, and who reads them elsewhere looks for them as they are.
std::string Counted(Delivery delivery, std::int64_t count, const char* one, const char* several) {
  return fmt::format("{} {}", count, delivery == Delivery::kWritten && count == 1 ? one : several);
}

const Words& WordsOf(Delivery delivery) { return delivery == Delivery::kSent ? kSentWords : kWrittenWords; }

}  // namespace

Delivery DeliveryTold(std::string_view report) {
  return report.starts_with(kWrittenWords.started) ? Delivery::kWritten : Delivery::kSent;
}

void RunReport::Started() { Line(WordsOf(delivery_).started); }

void RunReport::SendingTo(std::int64_t recipients, const std::optional<PartialRange>& range) {
  const Words& words = WordsOf(delivery_);
  const std::string to = Counted(delivery_, recipients, "recipient", "recipients");
  if (range) {
    Line(fmt::format("{} {} (from #{} to #{}).", words.partly, to, range->first, range->last));
  } else {
    Line(fmt::format("{} {}.", words.wholly, to));
  }
}

void RunReport::LogLine(std::string_view line) { Line(line); }

void RunReport::LogLines(std::string_view lines) {
  for (auto end = lines.find('\n'); end != std::string_view::npos; end = lines.find('\n')) {
    Line(lines.substr(0, end));
    lines.remove_prefix(end + 1);
  }
}

void RunReport::Sent() {
  Line(WordsOf(delivery_).one);
  BlankLine();
}

void RunReport::Failed(const smtp::Outcome& outcome) {
  const auto code = static_cast<std::int32_t>(outcome.code);
  if (delivery_ == Delivery::kSent) {
    Lines(smtp::WriteSendStatus(code));
  } else {
    Line("The message was not written.");
    Lines(outcome.reason.empty() ? smtp::ResultText(code) : outcome.reason);
  }
  BlankLine();
}

void RunReport::SubjectNotEncoded() {
  Line("Error encoding subject.");
  BlankLine();
}

void RunReport::BodyNotLoaded(std::int32_t code) {
  const std::string text = message::BodyImportText(code);
  if (text.empty()) return;
  Line(text);
  BlankLine();
}

void RunReport::Completed(const RunSummary& run) {
  const Words& words = WordsOf(delivery_);
  const bool is_sent = delivery_ == Delivery::kSent;
  if (is_sent || run.everybody_got_it()) {
    Line(words.completed);
  } else {
    Line(run.sent > 0 ? kPartlyWritten : kNotWritten);
    if (run.cancelled) Line("The run was cancelled.");
    if (run.stopped) Line("The run stopped: " + InOneLine(*run.stopped));
  }
  const auto count = [this](std::int64_t messages, const char* what) {
    if (messages == 0) return;
    Line(fmt::format("{} {} during process.", Counted(delivery_, messages, "message", "messages"), what));
  };
  count(run.sent, words.done);
  count(run.failed, "failed");
  if (const auto left = NotTriedIn(run); left && !is_sent) Line(left->InEnglish());
}

void RunReport::Flush() { Keep(file_.Flush()); }

void RunReport::Line(std::string_view text) {
  shown_(text);
  Keep(file_.Write(text));
  Keep(file_.Write("\r\n"));
}

void RunReport::Lines(std::string_view text) {
  for (const auto line : platform::Split(text, '\n')) Line(platform::Trim(line));
}

void RunReport::Keep(const Result<void>& written) {
  if (!written && !trouble_) trouble_ = written.error();
}

}  // namespace quillcast::run

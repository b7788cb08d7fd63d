#include "run/run_report.h"

#include <fmt/format.h>

#include "message/body_import.h"
#include "platform/text.h"
#include "smtp/result_code.h"

namespace quillcast::run {
namespace {

struct Words {
  const char* started;
  const char* partly;
  const char* wholly;
  const char* one;
  const char* completed;
  const char* several;
};

constexpr Words kSentWords = {
    "Personal Sending process has been started.",   "Partial Sending to",           "Sending to", smtp::kSentText,
    "Personal Sending process has been completed.", "messages sent during process."};
constexpr Words kWrittenWords = {"The messages are written into files. Nothing is sent.",
                                 "Partial writing for",
                                 "Writing for",
                                 "Message written.",
                                 "The messages have been written into files. Nothing was sent.",
                                 "messages written during process."};

const Words& WordsOf(Delivery delivery) { return delivery == Delivery::kSent ? kSentWords : kWrittenWords; }

}  // namespace

void RunReport::Started() { Line(WordsOf(delivery_).started); }

void RunReport::SendingTo(std::int64_t recipients, const std::optional<PartialRange>& range) {
  const Words& words = WordsOf(delivery_);
  if (range) {
    Line(fmt::format("{} {} recipients (from #{} to #{}).", words.partly, recipients, range->first, range->last));
  } else {
    Line(fmt::format("{} {} recipients.", words.wholly, recipients));
  }
}

void RunReport::LogLine(std::string_view line) { Line(line); }

void RunReport::Sent() {
  Line(WordsOf(delivery_).one);
  BlankLine();
}

void RunReport::Failed(std::int32_t code) {
  const std::string text =  // the lines are views into it
      delivery_ == Delivery::kSent ? smtp::WriteSendStatus(code)
                                   : "The message was not written.\n" + smtp::ResultText(code);
  for (const auto line : platform::Split(text, '\n')) Line(platform::Trim(line));
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

void RunReport::Completed(std::int64_t sent, std::int64_t failed) {
  const Words& words = WordsOf(delivery_);
  Line(words.completed);
  if (sent > 0) Line(fmt::format("{} {}", sent, words.several));
  if (failed > 0) Line(fmt::format("{} messages failed during process.", failed));
}

void RunReport::Flush() { Keep(file_.Flush()); }

void RunReport::Line(std::string_view text) {
  shown_(text);
  Keep(file_.Write(text));
  Keep(file_.Write("\r\n"));
}

void RunReport::Keep(const Result<void>& written) {
  if (!written && !trouble_) trouble_ = written.error();
}

}  // namespace quillcast::run

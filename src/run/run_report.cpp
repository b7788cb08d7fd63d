#include "run/run_report.h"

#include <fmt/format.h>

#include "message/body_import.h"
#include "platform/text.h"
#include "smtp/result_code.h"

namespace quillcast::run {

void RunReport::Started() { Line("Personal Sending process has been started."); }

void RunReport::SendingTo(std::int64_t recipients, const std::optional<PartialRange>& range) {
  if (range) {
    Line(fmt::format("Partial Sending to {} recipients (from #{} to #{}).", recipients, range->first, range->last));
  } else {
    Line(fmt::format("Sending to {} recipients.", recipients));
  }
}

void RunReport::LogLine(std::string_view line) { Line(line); }

void RunReport::Sent() {
  Line(smtp::kSentText);
  BlankLine();
}

void RunReport::Failed(std::int32_t code) {
  const std::string text = smtp::WriteSendStatus(code);  // the lines are views into it
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
  Line("Personal Sending process has been completed.");
  if (sent > 0) Line(fmt::format("{} messages sent during process.", sent));
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

// The running text of a sending run: written to the history folder line by line as it grows, never held whole.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "platform/result.h"
#include "recipients/row_source.h"
#include "run/carrier.h"
#include "smtp/outcome.h"

namespace quillcast::run {

using recipients::PartialRange;
struct RunSummary;

// What became of the messages of a report, by its first line.
Delivery DeliveryTold(std::string_view report);

class RunReport {
 public:
  // `shown` gets every line as well, without its line end.
  RunReport(platform::FileWriter file, std::function<void(std::string_view)> shown, Delivery delivery)
      : file_(std::move(file)), shown_(std::move(shown)), delivery_(delivery) {}

  void Started();
  // `recipients`: of the range, where there is one, else of the group.
  void SendingTo(std::int64_t recipients, const std::optional<PartialRange>& range);
  void LogLine(std::string_view line);    // of the connection
  void LogLines(std::string_view lines);  // each with "\n"
  void Sent();                            // or written
  // With the reason where the message was to be written: there the code says little.
  void Failed(const smtp::Outcome& outcome);
  void SubjectNotEncoded();
  void BodyNotLoaded(std::int32_t code);  // nothing for a code that has no text
  // Where messages were written, why not all of them, and who was not tried, as well.
  void Completed(const RunSummary& run);

  // Makes what was written so far safe from a kill of this process.
  void Flush();
  // The first failure to write, when there was one; nothing after it is in the file.
  const std::optional<Error>& trouble() const { return trouble_; }

 private:
  void Line(std::string_view text);
  void Lines(std::string_view text);
  void BlankLine() { Line(""); }
  void Keep(const Result<void>& written);

  platform::FileWriter file_;
  std::function<void(std::string_view)> shown_;
  const Delivery delivery_;
  std::optional<Error> trouble_;
};

}  // namespace quillcast::run

#include "support/request_contents.h"

#include <fmt/format.h>

#include <iterator>

#include "platform/text.h"
#include "smtp/envelope_address.h"
#include "support/system_report.h"

namespace quillcast::support {
namespace {

namespace fs = std::filesystem;

// What the person wrote stands behind everything else, so that nothing in it can pass for another line.
std::string BodyOf(const SupportRequest& request, const SystemFacts& facts) {
  return fmt::format("Sender's IP Address: {}\r\n\r\n---Problem Description---\r\n{}\r\n", facts.local_address,
                     platform::WithLineEnds(request.description));
}

std::string SenderOf(const SupportRequest& request) {
  const auto address = smtp::EnvelopeAddress(request.email);
  return fmt::format("{} <{}>", request.name, address ? address->text() : request.email);
}

Error NotThere(FurtherItem item) {
  constexpr const char* kRemedy = "Leave it out: untick its box, or leave the option out.";
  switch (item) {
    case FurtherItem::kLastReport:
      return {Failure::kNoInput, "There is no report of a run.", kRemedy};
    case FurtherItem::kFirstMessage:
      return {Failure::kNoInput, "The last run left no first message.", kRemedy};
    case FurtherItem::kSessionLog:
      break;
  }
  return {Failure::kNoInput, "The session has no log yet: nothing has gone wrong in it.", kRemedy};
}

Result<void> AddFurther(const SupportRequest& request, const profile::Folders& folders, std::vector<fs::path>& files) {
  if (request.further == decltype(request.further){}) return {};
  const auto found = FindFurtherFiles(folders);
  if (!found) return found.error();
  for (std::size_t item = 0; item < kFurtherItems; ++item) {
    if (!request.further[item]) continue;
    if (!(*found)[item]) return NotThere(static_cast<FurtherItem>(item));
    files.push_back(*(*found)[item]);
  }
  return {};
}

// "price.pdf (12 KiB)"; without a size where it cannot be told.
std::string Named(const fs::path& file) {
  const std::string name = platform::Printable(file.filename().string(), 200);
  std::error_code failed;
  const auto bytes = fs::file_size(file, failed);
  return failed ? name : fmt::format("{} ({})", name, platform::HumanSize(bytes));
}

}  // namespace

Result<RequestContents> ContentsOf(const SupportRequest& request, const SystemFacts& facts, const smtp::Address& to,
                                   const profile::Folders& folders, const profile::SettingsStore& settings,
                                   const platform::Secret& password) {
  auto report = SystemReport(facts, folders.program, settings, password);
  if (!report) return report.error();
  RequestContents contents{.to = to,
                           .from = SenderOf(request),
                           .subject = request.product + " - " + request.topic,
                           .body = BodyOf(request, facts),
                           .report = *std::move(report),
                           .files = {}};
  std::error_code not_there;  // which is told when it is read
  if (fs::equivalent(request.attachment, folders.settings, not_there)) {
    return Error{Failure::kNotPermitted, "Your settings file does not go along: your password may be in it.",
                 "What helps of the settings is in the report."};
  }
  if (!request.attachment.empty()) contents.files.push_back(request.attachment);
  const auto added = AddFurther(request, folders, contents.files);
  return added ? Result<RequestContents>(std::move(contents)) : added.error();
}

std::string AsText(const RequestContents& contents) {
  std::string text = fmt::format("To: {}\r\nFrom: {}\r\nSubject: {}\r\n", contents.to.text(),
                                 platform::Printable(contents.from), platform::Printable(contents.subject));
  const auto append = std::back_inserter(text);
  fmt::format_to(append, "Attached: {} ({})\r\n", kReportName, platform::HumanSize(contents.report.size()));
  for (const auto& file : contents.files) fmt::format_to(append, "Attached: {}\r\n", Named(file));
  fmt::format_to(append, "\r\n{}\r\n{}:\r\n\r\n{}", contents.body, kReportName, contents.report);
  return text;
}

}  // namespace quillcast::support

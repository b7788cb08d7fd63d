// The two lists of an extraction.
#include <array>
#include <utility>

#include "mail_file/extraction.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kLongestValue = 100'000;  // bytes

constexpr std::array kTypeLines = {"Type: Normal recipient", "Type: Carbon copy recipient",
                                   "Type: Blind carbon copy recipient"};  // by RecipientType

void AppendLine(std::string& out, std::string_view label, std::string_view value) {
  out += label;
  out += platform::Printable(value, kLongestValue);
  out += "\r\n";
}

}  // namespace

std::string RecipientLines(const MessageFacts& facts) {
  std::string out;
  for (const auto& [mailbox, type] : facts.recipients) {
    AppendLine(out, "Name: ", mailbox.name);
    AppendLine(out, "Address: ", mailbox.address);
    AppendLine(out, kTypeLines.at(static_cast<std::size_t>(type)), "");
    AppendLine(out, "-", "");
  }
  return out;
}

std::string StampLines(const MessageFacts& facts) {
  std::string out;
  for (const RelayStamp& stamp : facts.stamps) {
    AppendLine(out, "By: ", stamp.by);
    AppendLine(out, "DateTime: ", stamp.time ? stamp.time->local : "");
    AppendLine(out, "For: ", stamp.for_whom);
    AppendLine(out, "From: ", stamp.from);
    AppendLine(out, "ID: ", stamp.id);
    AppendLine(out, "Protocol: ", stamp.protocol);
    AppendLine(out, "TimeZoneBias: ", stamp.time ? stamp.time->Bias() : "");
    AppendLine(out, "Via: ", stamp.via);
    AppendLine(out, "-", "");
  }
  return out;
}

}  // namespace quillcast::mail_file

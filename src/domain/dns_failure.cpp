#include "domain/dns_failure.h"

#include <cstring>

#include "platform/text.h"

namespace quillcast::domain {
namespace {

constexpr const char* kAskAnother = "Ask another name server, or try again later.";

}  // namespace

Error DnsFailure(const net::DnsAnswer& answer, std::string_view name, const Sentence& record) {
  using net::DnsOutcome;
  const std::string shown = platform::Printable(name);
  switch (answer.outcome) {
    case DnsOutcome::kFound:
    case DnsOutcome::kNoData:
      return {Failure::kNoInput, Say("{} does not have {}.", shown, record)};
    case DnsOutcome::kNoSuchName:
      return {Failure::kNoInput, Say("There is no name {}.", shown), "Check the spelling of the name."};
    case DnsOutcome::kBadName:
      return {Failure::kUsage, Say("\"{}\" is not a name that a host can have.", shown),
              "Check the spelling of the name."};
    case DnsOutcome::kServerFailed:
      return {Failure::kUnavailable, Say("The name server failed when it was asked for {} (SERVFAIL).", shown),
              kAskAnother};
    case DnsOutcome::kRefused:
      return {Failure::kUnavailable, Say("The name server refused to be asked for {} (REFUSED).", shown),
              "Ask a name server that serves this computer."};
    case DnsOutcome::kNotUnderstood:
      return {Failure::kUnavailable, Say("The name server did not understand the question for {}.", shown),
              kAskAnother};
    case DnsOutcome::kMalformed:
      return {Failure::kUnavailable,
              Say("What the name server sent for {} is damaged or answers another question.", shown), kAskAnother};
    case DnsOutcome::kNoAnswer:
      return {Failure::kTimedOut, Say("The name server did not answer the question for {} in time.", shown),
              "Check that the name server can be reached, or ask another."};
    case DnsOutcome::kNoSocket:
      return {Failure::kUnavailable, Say("The name server cannot be reached: {}.", std::strerror(answer.error_number)),
              "Check the name server's address, and the network."};
  }
  return {Failure::kInternal, "The look-up failed."};
}

}  // namespace quillcast::domain

#include "smtp/client/fit_envelope.h"

#include <fmt/format.h>

#include <utility>

#include "net/idna.h"
#include "platform/utf8.h"

namespace quillcast::smtp {
namespace {

std::optional<Outcome> Cannot(ResultCode code, const char* reason) { return Outcome{State::kFailed, code, {}, reason}; }

// A domain goes out in A-labels, which are longer than what was typed; a local part beyond ASCII has no other form
// (RFC 6531 3).
std::optional<Outcome> FitAddress(Address& address, const Capabilities& capabilities, ResultCode code) {
  if (platform::IsAscii(address.text())) return {};
  const std::string ascii_domain = net::WithAsciiDomain(address.text());
  if (!platform::IsAscii(std::string_view(ascii_domain).substr(ascii_domain.rfind('@') + 1))) {
    return Cannot(code, "The domain of the address is no name that a host can have, so it was not sent.");
  }
  if (platform::IsAscii(address.local_part())) {
    auto fitted = Address::From(ascii_domain);
    if (!fitted) {
      return Cannot(code,
                    "The address has more than 254 octets, or more than 64 before its \"@\", so it was not sent.");
    }
    address = *std::move(fitted);
  } else if (!capabilities.smtputf8) {
    return Cannot(code,
                  "The address holds characters beyond ASCII before its \"@\", and the server does not take such "
                  "addresses (SMTPUTF8), so it was not sent.");
  }
  return {};
}

std::optional<Outcome> Refuse(std::string reason) {
  return Outcome{State::kRefused, ResultCode::kMessageRefused, {}, std::move(reason)};
}

std::optional<Outcome> UseSevenBit(Envelope& envelope, MessageSource& message) {
  const auto size = message.UseSevenBit();
  if (size) {
    envelope.size = *size;
    envelope.eight_bit = false;
    return {};
  }
  if (size.error().failure == Failure::kBadData) return Refuse(InOneLine(size.error()));
  return Outcome{State::kFailed, CodeOfSource(size.error()), {}, size.error().what.InEnglish()};
}

}  // namespace

ResultCode CodeOfSource(const Error& error) {
  if (error.failure == Failure::kInternal) return ResultCode::kException;
  return error.failure == Failure::kNoInput ? ResultCode::kFileNotOpened : ResultCode::kFileNotRead;
}

std::optional<Outcome> FitEnvelope(Envelope& envelope, MessageSource& message, const Capabilities& capabilities) {
  if (auto bad = FitAddress(envelope.sender, capabilities, ResultCode::kSenderRefused)) return bad;
  if (auto bad = FitAddress(envelope.recipient, capabilities, ResultCode::kRecipientRefused)) return bad;
  if (envelope.recipient.empty()) return Cannot(ResultCode::kRecipientRefused, "The recipient has no address.");
  if (envelope.eight_bit && !capabilities.eight_bit_mime) {
    if (auto bad = UseSevenBit(envelope, message)) return bad;
  }
  if (capabilities.size_limit != 0 && envelope.size > capabilities.size_limit) {
    return Refuse(fmt::format("The message has {} octets, and the server takes {} at most, so it was not sent.",
                              envelope.size, capabilities.size_limit));
  }
  return {};
}

}  // namespace quillcast::smtp

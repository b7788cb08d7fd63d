#include "domain/whois.h"

#include <algorithm>
#include <array>
#include <utility>

#include "charset/charset.h"
#include "net/connect.h"
#include "net/idna.h"
#include "net/resolver.h"
#include "net/stream.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::domain {
namespace {

constexpr std::size_t kBlock = 16384;

// How the servers of registries, regions and the root write it, before the colon.
constexpr std::array<std::string_view, 5> kReferralFields = {"refer", "whois", "whois server", "registrar whois server",
                                                             "referralserver"};

std::string ServerText(const net::HostPort& server) { return platform::Printable(server.host); }

// Names that no name server of the world has (RFC 6761, RFC 6762), and what systems call themselves.
constexpr std::array<std::string_view, 4> kOwnNames = {"localhost", "localdomain", "local", "internal"};

// By name: an answer that anybody may have written does not choose among the addresses of this network.
bool IsPublicName(std::string_view host) {
  while (host.ends_with('.')) host.remove_suffix(1);
  const auto dot = host.rfind('.');
  if (dot == std::string_view::npos || host.find(':') != std::string_view::npos) return false;
  const std::string_view last = host.substr(dot + 1);
  // "127.1" and "127.0x1" are addresses to the system.
  if (last.empty() || (last.front() >= '0' && last.front() <= '9')) return false;
  return std::none_of(kOwnNames.begin(), kOwnNames.end(),
                      [&](std::string_view own) { return platform::EqualsIgnoringAsciiCase(last, own); });
}

bool IsHostCharacter(char c) { return platform::AsciiIsAlnum(c) || c == '-' || c == '.' || c == ':'; }

// "whois.example", "whois://whois.example:43/"; nothing for a page, another port, an address or what is no host.
std::optional<net::HostPort> ReferralIn(std::string_view value) {
  value = platform::Trim(value);
  constexpr std::string_view kScheme = "whois://";
  if (platform::StartsWithIgnoringAsciiCase(value, kScheme)) value.remove_prefix(kScheme.size());
  while (value.ends_with('/')) value.remove_suffix(1);
  if (!std::all_of(value.begin(), value.end(), IsHostCharacter)) return {};
  auto referral = net::ParseHostPort(value, kWhoisPort);
  if (!referral || referral->port != kWhoisPort || !IsPublicName(referral->host)) return {};
  return referral;
}

std::optional<net::HostPort> FindReferral(std::string_view text) {
  for (const std::string_view line : platform::Split(text, '\n')) {
    const auto colon = line.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string field = platform::AsciiLower(platform::Trim(line.substr(0, colon)));
    if (std::find(kReferralFields.begin(), kReferralFields.end(), field) == kReferralFields.end()) continue;
    if (auto referral = ReferralIn(line.substr(colon + 1))) return referral;
  }
  return {};
}

// The escapes with which ISO-2022-JP begins its Japanese characters.
bool LooksLikeIso2022Jp(std::string_view bytes) {
  return platform::IsAscii(bytes) &&
         (bytes.find("\x1B$B") != std::string_view::npos || bytes.find("\x1B$@") != std::string_view::npos);
}

charset::Charset CharsetOf(std::string_view bytes, std::string_view chosen) {
  const std::string_view looks_like = LooksLikeIso2022Jp(bytes) ? "iso-2022-jp"
                                      : platform::IsUtf8(bytes) ? "utf-8"
                                                                : "windows-1252";
  auto found = charset::FindCharset(chosen.empty() ? looks_like : chosen);
  if (!found) found = charset::FindCharset(looks_like);
  return found.value_or(charset::Charset::Utf8());
}

// Whether a record of TLS (RFC 8446 5.1) stands where a text should.
bool IsTls(std::string_view bytes) {
  return bytes.size() >= 3 && (bytes[0] == 0x15 || bytes[0] == 0x16) && bytes[1] == 3 && bytes[2] <= 4;
}

Result<void> SendAll(net::Stream& stream, std::string_view line, const net::Patience& patience) {
  while (!line.empty()) {
    const auto sent = stream.WriteNow(line);
    if (!sent) return sent.error();
    if (*sent) {
      line.remove_prefix(**sent);
      continue;
    }
    std::array<char, 1> room{};  // nothing comes before the line is sent, so that this is a wait
    const auto waited = stream.Read(room, true, patience);
    if (!waited) return waited.error();
  }
  return {};
}

// What came, and why there is no more of it. A cancel leaves nothing.
struct Received {
  std::string bytes;
  std::optional<Error> cut_short;
};

Error TooLong(const net::HostPort& server) {
  return {Failure::kBadData,
          Say("What {} sent is longer than {} and was cut there.", ServerText(server),
              platform::HumanSize(kLongestWhoisAnswer)),
          "Ask another server, if this one sends what is no answer."};
}

Error NotInTime(const net::HostPort& server, bool has_begun) {
  const std::string shown = ServerText(server);
  return {Failure::kTimedOut,
          has_begun ? Say("{} had not finished in time.", shown) : Say("{} did not answer in time.", shown),
          "Try again later, or ask another server."};
}

Received ReceiveAll(net::Stream& stream, const net::HostPort& server, const net::Patience& patience) {
  Received received;
  std::array<char, kBlock> block{};
  for (;;) {
    // Asked here too: where bytes never stop coming, no wait gets to see either.
    if (patience.deadline.Passed(patience.clock.Monotonic())) {
      received.cut_short = NotInTime(server, !received.bytes.empty());
      return received;
    }
    const auto count = stream.Read(block, false, patience);
    if (!count) {
      const bool is_late = count.error().failure == Failure::kTimedOut;
      received.cut_short = is_late ? NotInTime(server, !received.bytes.empty()) : count.error();
      return received;
    }
    if (!*count) continue;
    if (**count == 0) return received;
    received.bytes.append(block.data(), **count);
    if (received.bytes.size() > kLongestWhoisAnswer) {
      received.bytes.resize(kLongestWhoisAnswer);
      received.bytes.resize(kLongestWhoisAnswer - platform::IncompleteUtf8Tail(received.bytes));
      received.cut_short = TooLong(server);
      return received;
    }
  }
}

Error NoName(std::string_view name) {
  return {Failure::kUsage, Say("\"{}\" is not a name that a domain can have.", platform::Printable(name)),
          "Check the spelling of the name."};
}

Result<std::string> LineFor(std::string_view name) {
  if (name.empty() || platform::HoldsControl(name)) return NoName(name);
  auto ascii = net::AsciiHost(name);
  if (!ascii) return NoName(name);
  return *ascii + "\r\n";
}

Result<Received> Exchange(const net::HostPort& server, std::string_view line, const net::Patience& patience) {
  net::Resolver resolver;
  const auto addresses = resolver.Resolve(server.host, patience);
  if (!addresses) return addresses.error();
  auto socket = net::Connect(*addresses, server.port, patience);
  if (!socket) return socket.error();
  net::Stream stream(*std::move(socket));
  if (const auto sent = SendAll(stream, line, patience); !sent) return sent.error();
  return ReceiveAll(stream, server, patience);
}

}  // namespace

std::string WhoisAnswer::Box() const { return platform::WithLineEnds(text); }

Sentence DescribeWhois(const WhoisAnswer& answer, const net::HostPort& server) {
  if (answer.cut_short) return AsSentence(*answer.cut_short);
  return Say("Answer of {}, read as {}.", ServerText(server), answer.charset);
}

WhoisAnswer ReadWhoisAnswer(std::string_view bytes, std::string_view charset) {
  const charset::Charset set = CharsetOf(bytes, charset);
  WhoisAnswer answer;
  answer.charset = set.MimeName();
  answer.text = platform::ReplaceAll(set.Decode(bytes), "\r\n", "\n");
  answer.referral = FindReferral(answer.text);
  return answer;
}

Result<WhoisAnswer> AskWhois(const net::HostPort& server, std::string_view name, const net::Patience& patience,
                             std::string_view charset) {
  const auto line = LineFor(name);
  if (!line) return line.error();
  const auto received = Exchange(server, *line, patience);
  if (!received) return received.error();
  const auto& cut_short = received->cut_short;
  if (cut_short && (received->bytes.empty() || cut_short->failure == Failure::kTryAgain)) return *cut_short;
  if (received->bytes.empty()) {
    return Error{Failure::kUnavailable, Say("{} closed the connection without an answer.", ServerText(server)),
                 "Try again later, or ask another server."};
  }
  if (IsTls(received->bytes)) {
    return Error{Failure::kUnavailable,
                 Say("{} speaks TLS at port {}, where whois is plain text.", ServerText(server), server.port),
                 "Check the server's name and port."};
  }
  WhoisAnswer answer = ReadWhoisAnswer(received->bytes, charset);
  if (answer.referral == server) answer.referral.reset();
  answer.cut_short = cut_short;
  return answer;
}

}  // namespace quillcast::domain

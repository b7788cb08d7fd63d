#include "domain/connection/connection_meaning.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "domain/connection/connection_facts.h"
#include "domain/connection/connection_verdict.h"
#include "net/address.h"
#include "net/resolver.h"
#include "platform/text.h"
#include "smtp/outcome_text.h"

namespace quillcast::domain {
namespace {

using enum ConnectionVerdict;

constexpr std::uint16_t kBetweenServers = 25;
constexpr std::size_t kLongestInSentence = 200;  // octets: it stands in a sentence

std::string HostOf(const ConnectionTest& test) { return platform::Printable(test.server.host, 255); }

std::string WaysOf(const ConnectionTest& test) { return Joined(LastOffer(test).sign_in, kLongestInSentence); }

std::string CertifiedNames(const ConnectionTest& test) {
  return test.tls && test.tls->certificate ? Joined(test.tls->certificate->names, kLongestInSentence) : std::string();
}

// Whether one of its names is that of a server, and not of all that are in one place.
bool HasWholeName(const net::CertificateFacts& certificate) {
  return std::any_of(certificate.names.begin(), certificate.names.end(),
                     [](const std::string& name) { return name.find('*') == std::string::npos; });
}

// What the account needs for this server, as its dialog calls it.
Sentence Setting(const ConnectionTest& test, const char* security) {
  const auto mode = ModeFor(LastOffer(test).known);
  if (!mode) return Say("In the account: port {} and Security {}.", test.server.port, security);
  return Say("In the account: port {}, Security {}, and Mode {} for signing in.", test.server.port, security, *mode);
}

Sentence Usual() { return "Providers take mail from their customers on port 587 (STARTTLS) or 465 (TLS)."; }

// Port 25 says most about why.
std::vector<Sentence> WithUsualPorts(const ConnectionTest& test, Sentence what) {
  if (test.server.port != kBetweenServers) return {std::move(what), Usual()};
  return {std::move(what), "Port 25 is where servers hand mail to each other.", Usual()};
}

std::vector<Sentence> OfClear(const ConnectionTest& test) {
  const std::uint16_t port = test.server.port;
  if (net::IsLoopbackHost(test.server.host)) {
    return {Say("This server speaks plain text on port {}, which is no harm: it is this computer itself.", port),
            Setting(test, "Automatic")};
  }
  if (test.in_clear && test.in_clear->known.starttls) {
    return {Say("This server was spoken to in plain text on port {}, though it offers STARTTLS: a password would "
                "travel in clear.",
                port),
            Setting(test, "STARTTLS")};
  }
  if (test.security == smtp::Security::kNone) {
    return {Say("This server speaks plain text alone on port {}: a password travels in clear.", port), Usual(),
            "Security None is for a network that you trust alone."};
  }
  return {Say("This server speaks plain text alone on port {}: a password would travel in clear, so the account does "
              "not sign in there.",
              port),
          Usual(), "Only in a network that you trust set Security to None."};
}

std::vector<Sentence> OfWorking(const ConnectionTest& test, ConnectionVerdict verdict) {
  const std::uint16_t port = test.server.port;
  switch (verdict) {
    case kWantsStartTls:
      return {Say("This server wants STARTTLS on port {} before it lets you sign in.", port),
              Setting(test, "STARTTLS")};
    case kStartTls:
      return {Say("This server encrypts by STARTTLS on port {} and lets you sign in with {}.", port, WaysOf(test)),
              "It would take a password in plain text as well; with Security STARTTLS none goes out so.",
              Setting(test, "STARTTLS")};
    case kTls:
      return {Say("This server speaks TLS from the first byte on port {} and lets you sign in with {}.", port,
                  WaysOf(test)),
              Setting(test, "TLS")};
    case kInClear:
      return OfClear(test);
    case kOpen:
      return WithUsualPorts(test, Say("This server speaks plain text on port {} and offers no way to sign in: it takes "
                                      "mail for its own addresses, or from its own network.",
                                      port));
    case kNoSignIn:
      return WithUsualPorts(test, Say("This server encrypts on port {} and offers no way to sign in: it takes mail for "
                                      "its own addresses, or from its own network.",
                                      port));
    default:
      return {Say("This server lets people sign in with {} alone, which the account cannot do.", WaysOf(test)),
              "Many providers have a password for programs that makes another way possible."};
  }
}

std::vector<Sentence> OfReaching(const ConnectionTest& test, ConnectionVerdict verdict) {
  const std::string host = HostOf(test);
  const std::uint16_t port = test.server.port;
  switch (verdict) {
    case kNameUnknown:
      return {Say("No name server knows {}.", host), "Check the spelling of the server's name."};
    case kNameWithoutAddress:
      return {Say("{} has no address, though name servers know the name.", host),
              "Check the spelling of the server's name; it is often another one than that of the domain."};
    case kNoNameServer:
      return {Say("No name server can be reached from here, so that {} was not found.", host),
              "Check that this computer is connected to the network."};
    case kNameServersFailed:
      return {Say("The name servers of this computer failed, or refused, when they were asked for {}.", host),
              "Check that this computer is connected to the network, or try again later."};
    case kNameTimedOut:
      return {Say("The name servers of this computer did not answer when they were asked for {}.", host),
              "Check that this computer is connected to the network."};
    case kPortRefused:
      return {Say("{} is there, and nothing listens on its port {}.", host, port), Usual()};
    case kUnreachable:
      return {Say("The network does not lead to {} from here.", host),
              "Check that this computer is connected to the network."};
    default:
      return {Say("{} did not answer on port {}.", host, port),
              port == kBetweenServers ? Sentence("Many networks let nobody out to port 25. Try port 587.")
                                      : Sentence("A firewall may be in between, or the server is down.")};
  }
}

std::vector<Sentence> OfTls(const ConnectionTest& test, ConnectionVerdict verdict) {
  const std::uint16_t port = test.server.port;
  switch (verdict) {
    case kSpeaksTls:
      return {Say("This server speaks TLS from the first byte on port {}, where plain text was expected.", port),
              "In the account set Security to TLS."};
    case kSpeaksText:
      return {Say("This server speaks plain text on port {}, where TLS was expected.", port),
              "In the account set Security to STARTTLS, or take port 465."};
    case kTlsTooOld:
      return {"This server knows only versions of TLS older than 1.2, which are no longer safe.",
              "Whoever runs it has to renew it."};
    case kNoStartTls:
      return {Say("This server does not offer STARTTLS on port {}.", port), Usual()};
    case kStartTlsRefused:
      return {Say("This server offers STARTTLS on port {} and then refuses it.", port),
              "Whoever runs it has to see to that; until then try port 465 with Security TLS."};
    case kTextAfterStartTls:
      return {Say("This server agrees to STARTTLS on port {} and then goes on in plain text.", port),
              "Whoever runs it has to see to that; until then try port 465 with Security TLS."};
    default:
      return {Say("No encrypted connection to this server comes about on port {}.", port),
              "Check that Security fits the port: TLS for 465, STARTTLS for 587."};
  }
}

std::vector<Sentence> OfBadCertificate(const ConnectionTest& test, ConnectionVerdict verdict) {
  const std::string host = HostOf(test);
  const auto& certificate = test.tls ? test.tls->certificate : std::nullopt;
  const Sentence renew = "Whoever runs the server has to renew it.";
  switch (verdict) {
    case kExpired:
      return {Say("The certificate of {} expired on {}.", host, certificate ? DayOf(certificate->valid_to) : ""),
              renew};
    case kNotYetValid:
      return {Say("The certificate of {} holds from {} on.", host, certificate ? DayOf(certificate->valid_from) : ""),
              "Check that the clock of this computer is right."};
    case kOtherName:
      if (CertifiedNames(test).empty()) return {Say("The certificate of {} names no server.", host), renew};
      return {Say("The certificate of {} is for another name: {}.", host, CertifiedNames(test)),
              HasWholeName(*certificate)
                  ? "If that is your provider's name, put it into the account as the server."
                  : "If that is your provider's, put the name that the server has there into the account."};
    case kSelfSigned:
      return {Say("The certificate of {} is signed by itself alone, so anybody could have made it.", host),
              "If the server is yours, add its certificate to those that this computer trusts."};
    case kUnknownIssuer:
      return {Say("The certificate of {} comes from an authority that this computer does not know: {}.", host,
                  certificate ? platform::Printable(certificate->issuer, 255) : ""),
              "If the server is yours, add that authority's certificate to those that this computer trusts; else "
              "the server may leave out a certificate in between."};
    default:
      return {Say("The certificate of {} is not trusted: {}.", host,
                  certificate ? platform::Printable(certificate->why) : ""),
              renew};
  }
}

std::vector<Sentence> OfTalk(const ConnectionTest& test, ConnectionVerdict verdict) {
  const std::uint16_t port = test.server.port;
  const std::string reply = smtp::ReplyText(test.outcome.reply);
  switch (verdict) {
    case kTurnedAwayForNow:
      return {Say("This server turns connections away for now: {}.", reply),
              "Try later; where it stays so, ask whoever runs it."};
    case kTurnedAway:
      return WithUsualPorts(test, Say("This server wants no connection from here: {}.", reply));
    case kFetchesMail:
      return {Say("What answers on port {} is a server that mail is fetched from (POP3 or IMAP); it sends none.", port),
              Usual()};
    case kNoMailServer:
      return {Say("What answers on port {} is no mail server.", port), Usual()};
    case kOddAnswer:
      return {Say("This server greets, and then answers on port {} what is no answer of a mail server.", port),
              "Whoever runs it has to see to that; something in between may change what it says."};
    case kHelloRefused:
      return {Say("This server does not take the greeting of this computer: {}.", reply),
              "Ask whoever runs it whether it serves you."};
    case kSilent:
      return {Say("Something takes connections on port {} and does not greet.", port),
              "It is no mail server, it is overloaded, or a firewall is in between."};
    case kStoppedAnswering:
      return {"This server stopped answering in the middle of the conversation.",
              "It is overloaded, or a firewall is in between."};
    case kHungUp:
      return {"This server ended the connection without a word.", "Ask whoever runs it whether it serves you."};
    case kBrokeOff:
      return {"This server ended the connection in the middle of the conversation.",
              "Ask whoever runs it whether it serves you."};
    case kCancelled:
      return {"The test was cancelled."};
    default:
      return {Sentence(platform::Printable(test.outcome.reason))};
  }
}

// What a server said last, where its verdict has it not.
void AddUnfinished(const ConnectionTest& test, std::vector<Sentence>& meaning) {
  const ConnectionVerdict verdict = VerdictOf(test);
  const bool is_told = verdict == kSilent || verdict == kStoppedAnswering || verdict == kBrokeOff;
  if (!is_told || test.unfinished.empty()) return;
  meaning.insert(meaning.begin() + 1, Say("What came of its answer: \"{}\".", test.unfinished));
}

std::vector<Sentence> OfServer(const ConnectionTest& test) {
  const ConnectionVerdict verdict = VerdictOf(test);
  switch (GroupOf(verdict)) {
    case VerdictGroup::kWorks: {
      if (verdict != kPartsBadly) return OfWorking(test, verdict);
      std::vector<Sentence> meaning = OfWorking(test, VerdictBeforeQuit(test));
      meaning.emplace_back("It does not part as it should, which does no harm to messages.");
      return meaning;
    }
    case VerdictGroup::kReaching:
      return OfReaching(test, verdict);
    case VerdictGroup::kTls:
      return OfTls(test, verdict);
    case VerdictGroup::kCertificate:
      return OfBadCertificate(test, verdict);
    case VerdictGroup::kConversation:
      break;
  }
  std::vector<Sentence> meaning = OfTalk(test, verdict);
  AddUnfinished(test, meaning);
  return meaning;
}

// Of a server that others left less time than it would have had alone.
void AddCut(const ConnectionTest& test, std::vector<Sentence>& meaning) {
  if (!test.cut_short || test.speaks_tls) return;
  platform::Duration whole{};
  for (const StepTime& step : test.steps) whole += step.took;
  const double seconds = std::chrono::duration<double>(whole).count();
  meaning.push_back(
      Say("{} had only {} s: there was no time left for more.", TextOf(test.server), fmt::format("{:.1f}", seconds)));
}

}  // namespace

std::vector<Sentence> MeaningOf(const ConnectionTest& test) {
  if (VerdictOf(test) == kCancelled || (test.others.empty() && test.untried.empty())) return OfServer(test);
  std::vector<Sentence> meaning = {test.TakesMail()
                                       ? Say("Of the servers {} is the first that works.", TextOf(test.server))
                                       : Say("None of the servers that were tried works. Of {}:", TextOf(test.server))};
  for (Sentence& sentence : OfServer(test)) meaning.push_back(std::move(sentence));
  AddCut(test, meaning);
  for (const ConnectionTest& other : test.others) {
    meaning.push_back(Say("{} was tried too: {}", TextOf(other.server), OfServer(other).front()));
    AddCut(other, meaning);
  }
  if (test.untried.empty()) return meaning;
  std::vector<std::string> untried;
  for (const smtp::Server& server : test.untried) untried.push_back(TextOf(server));
  const std::string list = Joined(untried, kLongestInSentence);
  meaning.push_back(test.TakesMail() ? Say("Not tried, as this one works: {}.", list)
                                     : Say("There was no time left to try {}.", list));
  return meaning;
}

}  // namespace quillcast::domain

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "domain/sender/sender_topics.h"
#include "domain/sender/spf_check.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using State = SpfPublished::State;

using enum FindingKind;

void TellMissing(const std::string& domain, const SpfPublished& spf, Answers& answers, Findings& found) {
  if (spf.state == State::kNoAnswer) {
    found.push_back(Unanswered(kSpfNoAnswer, domain, *answers.Of(domain, net::DnsType::kTxt)));
  } else if (spf.state == State::kNone) {
    found.push_back(
        Found(kNoSpf, Say("{} does not say who may send for it.", domain),
              Say("Publish a text record at {} that begins with \"v=spf1\" and names who sends for you; your mail "
                  "provider tells what belongs into it.",
                  domain)));
  } else if (spf.state == State::kSeveral) {
    found.push_back(
        Found(kTwoSpf,
              Say("{} has {} records that begin with \"v=spf1\"; receivers then take none of them.", domain, spf.count),
              "Join them into one record."));
  } else {
    found.push_back(
        Found(kSpfMistake, Say("The record of {} has a mistake: {}", domain, spf.mistake.what), spf.mistake.remedy));
  }
}

// What makes receivers give up on a record that is right in itself, or keeps the whole of it from being known.
std::optional<Finding> GivenUp(const SpfCost& cost) {
  if (!cost.itself.empty()) {
    return Found(kSpfLoop, Say("The record of {} leads back to itself.", cost.itself),
                 "Remove the \"include:\" or \"redirect=\" that closes the circle.");
  }
  if (!cost.broken.empty()) {
    return Found(kSpfBrokenInclude,
                 cost.broken_state == State::kNone
                     ? Say("The record leads to {}, which has none.", cost.broken)
                     : Say("The record leads to {}, whose own has a mistake.", cost.broken),
                 "Receivers then take the whole record for a mistake: remove what leads there, or ask who runs that "
                 "domain.");
  }
  if (cost.lookups > kMostSpfLookups) {
    return Found(
        kSpfLookups,
        cost.lookups == kMostCountedLookups
            ? Say("The record takes {} look-ups or more; receivers give up after {}.", cost.lookups, kMostSpfLookups)
            : Say("The record takes {} look-ups; receivers give up after {}.", cost.lookups, kMostSpfLookups),
        "Remove each \"include:\" through which you no longer send, and write addresses in place of \"a\" "
        "and \"mx\".");
  }
  if (static_cast<int>(cost.void_names.size()) > kMostVoidLookups) {
    return Found(kSpfVoid,
                 Say("The record names {} hosts that are not there, {} among them; receivers give up after {}.",
                     cost.void_names.size(), cost.void_names[0], kMostVoidLookups),
                 "Remove them from the record.");
  }
  if (!cost.crowded.empty()) {
    return Found(
        kSpfMxHosts,
        Say("The record names the mail hosts of {}, which are more than the ten that receivers look at.", cost.crowded),
        "Write their addresses in place of \"mx\".");
  }
  if (!cost.unanswered.empty()) {
    return Unanswered(kSpfNoAnswer, cost.unanswered, cost.no_answer);
  }
  return std::nullopt;
}

// Addresses that nobody sends from (RFC 5771, RFC 1112; RFC 3849, RFC 9637), two of each family: a record that lets
// both through lets the whole family through. None has a reverse name, as a stranger mostly does.
constexpr std::array kNobodys = {std::array{"233.252.0.1", "240.0.0.1"}, std::array{"2001:db8::1", "3fff::1"}};

// kPass where one family passes whole.
SpfResult EvaluateNobody(Answers& answers, SpfSender sender) {
  SpfResult any = SpfResult::kNeutral;
  for (const auto& family : kNobodys) {
    int passing = 0;
    for (const char* address : family) {
      sender.address = *net::ParseIpAddress(address);
      const SpfResult result = EvaluateSpf(answers, sender, true);
      if (result == SpfResult::kPending) any = result;
      if (result == SpfResult::kPass) ++passing;
    }
    if (passing == static_cast<int>(family.size()) && any != SpfResult::kPending) any = SpfResult::kPass;
  }
  return any;
}

// "all" refuses everybody whom nothing before it lets send.
bool LetsNobody(const SpfRecord& record) {
  const auto passes = [](const SpfTerm& term) { return term.verdict == SpfVerdict::kPass; };
  const SpfTerm* all = record.All();
  return all != nullptr && std::none_of(record.terms.data(), all + 1, passes);
}

// What becomes of everybody whom the record does not name.
void TellOthers(const std::string& domain, const SpfRecord& record, const SpfCost& cost, SpfResult nobody,
                Findings& found) {
  const SpfTerm* all = record.All();
  if (nobody == SpfResult::kPass) {
    found.push_back(Found(kSpfOpen, Say("The record lets everybody in the world send for {}.", domain),
                          "Name those who send for you alone, and end it with \"~all\" or \"-all\"."));
  } else if (record.redirect.empty() && (all == nullptr || all->verdict == SpfVerdict::kNeutral)) {
    found.push_back(Found(kSpfNeutral, "The record says nothing of those whom it does not name.",
                          "End it with \"~all\" or \"-all\"."));
  } else if (LetsNobody(record)) {
    found.push_back(Found(
        kSpfNobody, Say("The record lets nobody send for {}.", domain),
        Say("Name those who send for you before its \"{}\"; your mail provider tells what belongs there.", all->text)));
  } else {
    found.push_back(Found(kSpf, Say("{} says who may send for it; its record takes {} of {} look-ups.", domain,
                                    cost.lookups, kMostSpfLookups)));
  }
  if (all != nullptr && all != &record.terms.back()) {
    found.push_back(Found(kSpfBehindAll,
                          Say("Receivers pass over \"{}\" in the record, as it stands behind \"{}\".",
                              platform::Printable((all + 1)->text, 60), all->text),
                          Say("Put \"{}\" at the end of the record.", all->text)));
  }
  const auto is_ptr = [](const SpfTerm& term) { return term.mechanism == SpfMechanism::kPtr; };
  if (std::any_of(record.terms.begin(), record.terms.end(), is_ptr)) {
    found.push_back(Found(kSpfPtr, "The record uses \"ptr\", which many receivers pass over.",
                          "Name the servers by \"a:\", \"ip4:\" or \"ip6:\" in its place."));
  }
}

// Whether the record lets one server send; kUnknown where it does not, as the server may pass the mail on. Nothing
// while it is not known.
std::optional<Passing> TellServer(const SeenServer& server, SpfSender sender, Answers& answers, Findings& found) {
  bool is_known = true;
  bool is_answered = true;
  bool stops = false;
  std::string outside;
  sender.host = server.name;
  for (const net::IpAddress& address : server.addresses) {
    sender.address = address;
    const SpfResult result = EvaluateSpf(answers, sender);
    if (result == SpfResult::kPending) is_known = false;
    if (result == SpfResult::kTemporaryError) is_answered = false;
    if (result == SpfResult::kPass || !outside.empty()) continue;
    outside = net::ToString(address);
    stops = result == SpfResult::kPermanentError;
  }
  if (!is_known) return std::nullopt;
  if (!is_answered) {
    found.push_back(Found(kSpfServerUnknown, Say("Whether the record names {} could not be found out.", server.name),
                          "Try again later, or ask another name server."));
  } else if (outside.empty()) {
    found.push_back(Found(kSpfCoversServer, Say("The record names {}.", server.name)));
    return Passing::kYes;
  } else if (stops) {
    found.push_back(
        Found(kSpfStopsAtServer,
              Say("Receivers give up on the record before they find {}, an address of {}.", outside, server.name),
              "If that is the server that sends your mail to others, name the address itself (\"ip4:\", "
              "\"ip6:\") before the hosts of the record."));
  } else {
    found.push_back(
        Found(kSpfMissesServer, Say("The record does not name {}, an address of {}.", outside, server.name),
              "If that is the server that sends your mail to others, add it; if it passes your mail on, ask its "
              "provider which \"include:\" belongs into the record."));
  }
  return Passing::kUnknown;
}

SpfPassing TellServers(const std::vector<SeenServer>& servers, const SpfSender& sender, Answers& answers,
                       Findings& found) {
  Known known = Known::kYes;
  std::optional<Passing> all;
  for (const SeenServer& server : servers) {
    if (server.addresses.empty()) continue;
    const std::optional<Passing> one = TellServer(server, sender, answers, found);
    if (!one) known = Known::kNotYet;
    all = std::min(all.value_or(Passing::kYes), one.value_or(Passing::kUnknown));
  }
  return {known, all.value_or(Passing::kUnknown)};
}

}  // namespace

SpfPassing CheckSpf(const SenderQuestion& question, const std::vector<SeenServer>& servers, Answers& answers,
                    Findings& found) {
  SpfSender sender{.local_part = question.local_part, .domain = question.domain};
  const auto seen =
      std::find_if(servers.begin(), servers.end(), [](const SeenServer& each) { return !each.addresses.empty(); });
  if (seen != servers.end()) {
    sender.address = seen->addresses[0];
    sender.host = seen->name;
  }
  const SpfPublished spf = FindSpf(answers, question.domain);
  if (spf.state == State::kPending) return {};
  if (spf.state != State::kRead) {
    TellMissing(question.domain, spf, answers, found);
    return {Known::kYes, spf.state == State::kNoAnswer ? Passing::kUnknown : Passing::kNo};
  }
  const SpfCost cost = CountSpf(answers, sender);
  const SpfResult nobody = EvaluateNobody(answers, sender);
  if (cost.is_pending || nobody == SpfResult::kPending) return {};
  if (std::optional<Finding> given_up = GivenUp(cost)) {
    found.push_back(*std::move(given_up));
    // The server may still be found before receivers give up, or may pass the mail on.
    return {Known::kYes, Passing::kUnknown};
  }
  TellOthers(question.domain, spf.record, cost, nobody, found);
  return TellServers(servers, sender, answers, found);
}

}  // namespace quillcast::domain

#include "domain/sender/dmarc_record.h"
#include "domain/sender/reverse_names.h"
#include "domain/sender/sender_topics.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using enum FindingKind;

// Where a finding belongs: the domain that is checked, and the server.
struct Place {
  const std::string& domain;
  const std::string& server;
};

// A server of somebody else's: what is wrong with it others have to mend, if it does harm at all.
bool IsProviders(const Place& place) {
  return !net::ParseIpAddress(place.server) && OrganisationalDomain(place.server) != OrganisationalDomain(place.domain);
}

// What is wrong with an address, as whoever runs the server has to mend it.
struct Fault {
  FindingKind own;
  FindingKind providers;
  const char* own_remedy;
  Sentence providers_remedy;
};

Finding OfAddress(const Place& place, const Sentence& what, const Fault& fault) {
  return IsProviders(place) ? Found(fault.providers, what, fault.providers_remedy)
                            : Found(fault.own, what, fault.own_remedy);
}

Finding NoName(const Place& place, const std::string& address) {
  return OfAddress(
      place, Say("The address {} has no name.", address),
      {kNoReverseName, kProvidersNoReverseName,
       "Ask who provides the server to give the address its name: many receivers refuse a server without.",
       Say("If {} sends your mail to others itself, ask its provider to give the address its name: many receivers "
           "refuse a server without. If it passes your mail on, nothing is to be done.",
           place.server)});
}

Finding NameElsewhere(const Place& place, const std::string& address, const std::string& name) {
  return OfAddress(
      place, Say("The address {} is called {}, which does not lead back to it.", address, name),
      {kReverseNameElsewhere, kProvidersReverseNameElsewhere,
       "Give that name the address, or let who provides the server give the address its right name.",
       Say("If {} sends your mail to others itself, ask its provider to make the two agree. If it passes your mail "
           "on, nothing is to be done.",
           place.server)});
}

Known CheckAddress(const Place& place, const net::IpAddress& address, Answers& answers, Findings& found) {
  const std::string text = net::ToString(address);
  const DnsAnswer* names = answers.Of(net::ReverseName(address), DnsType::kPtr);
  if (names == nullptr) return Known::kNotYet;
  if (!names->answered()) {
    found.push_back(Unanswered(kReverseNameNoAnswer, text, *names));
    return Known::kYes;
  }
  if (names->records.empty()) {
    found.push_back(NoName(place, text));
    return Known::kYes;
  }
  const std::string& name = names->records[0].text;
  switch (FollowBack(address, names->records, answers)) {
    case WayBack::kPending:
      return Known::kNotYet;
    case WayBack::kNoAnswer:
      found.push_back(Found(kReverseNameNoAnswer,
                            Say("Whether {}, the name of {}, leads back to it could not be found out.", name, text),
                            "Try again later, or ask another name server."));
      break;
    case WayBack::kThere:
      found.push_back(
          Found(kReverseName, Say("The address {} is called {}, and the name leads back to it.", text, name)));
      break;
    case WayBack::kElsewhere:
      found.push_back(NameElsewhere(place, text, name));
  }
  return Known::kYes;
}

// A server of which not every address is known, because nobody answered, or none, because there is none.
void TellMissingAddresses(const std::string& server, Answers& answers, Findings& found) {
  const NameAddresses all = answers.AddressesOf(server);
  if (all.known == Known::kNotYet) return;
  if (all.unanswered != nullptr) return found.push_back(Unanswered(kReverseNameNoAnswer, server, *all.unanswered));
  // "localhost", "mail": known to this computer or its network alone.
  if (!all.addresses.empty() || server.find('.') == std::string::npos) return;
  found.push_back(Found(kServerWithoutAddress,
                        Say("{}, to which the mail is given, has no address.", platform::Printable(server)),
                        "Check how it is written; if it is known in your own network alone, nothing is to be done."));
}

}  // namespace

Known CheckReverseNames(const std::string& domain, const SeenServer& server, Answers& answers, Findings& found) {
  if (!net::ParseIpAddress(server.name)) TellMissingAddresses(server.name, answers, found);
  Known known = Known::kYes;
  for (const net::IpAddress& address : server.addresses) {
    known = Both(known, CheckAddress({.domain = domain, .server = server.name}, address, answers, found));
  }
  return known;
}

}  // namespace quillcast::domain

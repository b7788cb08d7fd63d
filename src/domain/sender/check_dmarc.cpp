#include <algorithm>

#include "domain/sender/dmarc_record.h"
#include "domain/sender/sender_topics.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using enum FindingKind;

// What a domain publishes at "_dmarc"; nothing while it is not known.
std::optional<std::vector<std::string>> RecordsAt(const std::string& domain, Answers& answers, Findings& found) {
  const net::DnsAnswer* texts = answers.Of("_dmarc." + domain, net::DnsType::kTxt);
  if (texts == nullptr) return std::nullopt;
  std::vector<std::string> records;
  for (const net::DnsRecord& text : texts->records) {
    if (IsDmarc(text.text)) records.push_back(text.text);
  }
  if (!texts->answered()) found.push_back(Unanswered(kDmarcNoAnswer, "_dmarc." + domain, *texts));
  return records;
}

constexpr const char* kAsksAll = "Remove \"pct=\" once your own mail passes.";

// A record by which nothing is kept from being delivered; it is at `at`, of the domain or of the organisation above it.
void TellWatching(const std::string& domain, const std::string& at, const DmarcRecord& record, Findings& found) {
  const auto add = [&](Sentence what, Sentence remedy) {
    found.push_back(Found(kDmarcNone, std::move(what), std::move(remedy)));
  };
  if (!record.mistake.empty()) {
    return add(Say("{}, so the record at _dmarc.{} only watches: what others send in the name of {} is delivered.",
                   record.mistake, at, domain),
               record.remedy);
  }
  const char* tag = at != domain && record.names_subdomains ? "sp" : "p";
  const bool is_part = (at == domain ? record.policy : record.subdomain_policy) != DmarcRecord::Policy::kNone;
  const std::string why = is_part ? "pct=0" : std::string(tag) + "=none";
  const Sentence what =
      at == domain
          ? Say("The record only watches (\"{}\"): what others send in the name of {} is delivered.", why, domain)
          : Say("The record of {} only watches (\"{}\"): what others send in the name of {} is delivered.", at, why,
                domain);
  if (is_part) return add(what, kAsksAll);
  if (at == domain) {
    return add(what,
               "When its reports show that your own mail passes, write \"p=quarantine\", and later \"p=reject\".");
  }
  add(what, Say("When its reports show that your own mail passes, write \"{}=quarantine\" at _dmarc.{}, and later "
                "\"{}=reject\".",
                tag, at, tag));
}

void TellPolicy(const std::string& domain, const std::string& at, const DmarcRecord& record, DmarcRecord::Policy policy,
                Findings& found) {
  if (policy == DmarcRecord::Policy::kNone) {
    TellWatching(domain, at, record, found);
  } else {
    found.push_back(Found(kDmarc, policy == DmarcRecord::Policy::kReject
                                      ? Say("What others send in the name of {} is to be refused.", domain)
                                      : Say("What others send in the name of {} is to be put aside.", domain)));
    if (record.percent < 100) {
      found.push_back(Found(kDmarcPart,
                            record.percent == 0
                                ? Sentence("The record refuses nothing (\"pct=0\").")
                                : Say("The record asks that of {} in 100 messages alone.", record.percent),
                            kAsksAll));
    }
  }
  if (record.reports_to.empty()) {
    found.push_back(Found(kDmarcNoReports, "Nobody gets the reports of receivers.",
                          "Add \"rua=mailto:\" and an address, to learn whether your mail passes."));
  }
  const auto lost = std::find_if(record.reports_to.begin(), record.reports_to.end(),
                                 [](const std::string& place) { return !IsReportPlace(place); });
  if (lost != record.reports_to.end()) {
    found.push_back(Found(kDmarcReportsNowhere, Say("No report reaches \"{}\".", platform::Printable(*lost, 100)),
                          "Write \"mailto:\" before each address of \"rua=\"."));
  }
}

void TellAlignment(const std::string& domain, const std::string& at, const DmarcRecord& record,
                   DmarcRecord::Policy policy, const Ways& ways, Findings& found) {
  if (record.dkim_is_strict && ways.key == Passing::kNo && ways.organisations_key == Passing::kYes) {
    found.push_back(Found(kDmarcStrictKey,
                          Say("The record asks for a signature of {} itself (\"adkim=s\"); the key is at {}.", domain,
                              OrganisationalDomain(domain)),
                          Say("Let your mail provider sign for {}, or write \"adkim=r\" at _dmarc.{}.", domain, at)));
  }
  // One way is enough.
  const Passing passing = std::max({ways.spf, ways.key, record.dkim_is_strict ? Passing::kNo : ways.organisations_key});
  if (passing == Passing::kYes) {
    found.push_back(Found(kDmarcAlignment, Say("A message can pass in the name of {} itself.", domain)));
  } else if (passing == Passing::kUnknown) {
    found.push_back(
        Found(kDmarcAlignmentUnknown, Say("Whether a message passes in the name of {} could not be found out.", domain),
              "Name the selector that your mail provider signs with, or send yourself a message and look for "
              "\"dmarc=pass\" in its Authentication-Results."));
  } else {
    found.push_back(
        Found(policy == DmarcRecord::Policy::kNone ? kDmarcNoAlignmentWatched : kDmarcNoAlignment,
              Say("No message passes in the name of {}: there is neither an SPF record to go by nor a key that counts.",
                  domain),
              "Mend the SPF record, or publish the key that your mail provider signs with for this domain."));
  }
}

}  // namespace

bool CheckDmarc(const std::string& domain, const Ways& ways, Answers& answers, Findings& found) {
  const std::size_t before = found.size();
  std::string at = domain;
  std::optional<std::vector<std::string>> records = RecordsAt(at, answers, found);
  // Both are asked for at once, though the second counts only without the first (RFC 7489 6.6.3).
  const std::string above = OrganisationalDomain(domain);
  if (above != domain) {
    Findings of_above;
    std::optional<std::vector<std::string>> records_above = RecordsAt(above, answers, of_above);
    if (records && records->empty() && found.size() == before) {
      records = std::move(records_above);
      at = above;
      found.insert(found.end(), of_above.begin(), of_above.end());
    }
  }
  if (!records) return false;
  if (found.size() > before) return true;  // not answered
  if (records->empty()) {
    found.push_back(
        Found(kNoDmarc, Say("{} does not say what is to become of mail that others send in its name.", domain),
              Say("Publish the text record \"v=DMARC1; p=none; rua=mailto:you@{}\" at _dmarc.{}; large mail providers "
                  "refuse newsletters without one.",
                  above, above)));
    return true;
  }
  if (records->size() > 1) {
    found.push_back(Found(
        kTwoDmarc, Say("There are {} records at _dmarc.{}; receivers then take none of them.", records->size(), at),
        "Leave one of them."));
    return true;
  }
  const Result<DmarcRecord> record = ParseDmarc(records->front());
  if (!record) {
    found.push_back(Found(kDmarcMistake, Say("The record at _dmarc.{} has a mistake: {}", at, record.error().what),
                          record.error().remedy));
    return true;
  }
  const DmarcRecord::Policy policy = record->For(at != domain);
  TellPolicy(domain, at, *record, policy, found);
  TellAlignment(domain, at, *record, policy, ways, found);
  return true;
}

}  // namespace quillcast::domain

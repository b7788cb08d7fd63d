#include <algorithm>
#include <utility>

#include "domain/sender/dmarc_record.h"
#include "domain/sender/sender_topics.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using enum FindingKind;

Sentence AskOfAll(const std::string& at) { return Say("Remove \"pct=\" at _dmarc.{} once your own mail passes.", at); }

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
  if (is_part) return add(what, AskOfAll(at));
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
                            record.percent == 0 ? Say("The record at _dmarc.{} refuses nothing (\"pct=0\").", at)
                                                : Say("The record at _dmarc.{} asks that of {} in 100 messages alone.",
                                                      at, record.percent),
                            AskOfAll(at)));
    }
  }
  if (record.reports_to.empty()) {
    found.push_back(
        Found(kDmarcNoReports, "Nobody gets the reports of receivers.",
              Say("Add \"rua=mailto:\" and an address at _dmarc.{}, to learn whether your mail passes.", at)));
  }
  const auto lost = std::find_if(record.reports_to.begin(), record.reports_to.end(),
                                 [](const std::string& place) { return !IsReportPlace(place); });
  if (lost != record.reports_to.end()) {
    found.push_back(Found(kDmarcReportsNowhere, Say("No report reaches \"{}\".", platform::Printable(*lost, 100)),
                          Say("Write \"mailto:\" before each address of \"rua=\" at _dmarc.{}.", at)));
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

// What is published at "_dmarc", and where: of the domain, else of the organisation above it.
struct Published {
  std::string at;
  NameTexts records;
};

// Both are asked for at once, though the second counts only without the first (RFC 7489 6.6.3).
Published FindRecords(const std::string& domain, Answers& answers) {
  Published own{domain, answers.TextsAt("_dmarc." + domain, IsDmarc)};
  const std::string above = OrganisationalDomain(domain);
  if (above == domain) return own;
  NameTexts records_above = answers.TextsAt("_dmarc." + above, IsDmarc);
  const DnsAnswer* answer = own.records.answer;
  const bool has_none = answer != nullptr && answer->answered() && own.records.texts.empty();
  return has_none ? Published{above, std::move(records_above)} : own;
}

void TellRecord(const std::string& domain, const std::string& at, const std::string& text, const Ways& ways,
                Findings& found) {
  const Result<DmarcRecord> record = ParseDmarc(text);
  if (!record) {
    return found.push_back(Found(kDmarcMistake,
                                 Say("The record at _dmarc.{} has a mistake: {}", at, record.error().what),
                                 record.error().remedy));
  }
  const DmarcRecord::Policy policy = record->For(at != domain);
  TellPolicy(domain, at, *record, policy, found);
  TellAlignment(domain, at, *record, policy, ways, found);
}

}  // namespace

Known CheckDmarc(const std::string& domain, const Ways& ways, Answers& answers, Findings& found) {
  const auto& [at, records] = FindRecords(domain, answers);
  if (records.answer == nullptr) return Known::kNotYet;
  if (!records.answer->answered()) {
    found.push_back(Unanswered(kDmarcNoAnswer, "_dmarc." + at, *records.answer));
  } else if (records.texts.empty()) {
    found.push_back(Found(
        kNoDmarc, Say("{} does not say what is to become of mail that others send in its name.", domain),
        Say("Publish the text record \"v=DMARC1; p=none; rua=mailto:you@{}\" at _dmarc.{}; large mail providers refuse "
            "newsletters without one.",
            at, at)));
  } else if (records.texts.size() > 1) {
    found.push_back(
        Found(kTwoDmarc,
              Say("There are {} records at _dmarc.{}; receivers then take none of them.", records.texts.size(), at),
              "Leave one of them."));
  } else {
    TellRecord(domain, at, records.texts.front(), ways, found);
  }
  return Known::kYes;
}

}  // namespace quillcast::domain

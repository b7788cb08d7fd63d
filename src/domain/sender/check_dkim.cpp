#include <algorithm>

#include "domain/sender/dkim_key.h"
#include "domain/sender/dmarc_record.h"
#include "domain/sender/sender_topics.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

constexpr const char* kTopic = "DKIM";
constexpr int kShortest = 1024;  // RFC 8301 3.2: receivers need not take shorter ones, signers are to use 2048
constexpr int kAdvised = 2048;

std::string KeyName(const std::string& selector, const std::string& domain) {
  return selector + "._domainkey." + domain;
}

void TellKey(const std::string& name, const DkimKey& key, Findings& found, Passing& passing) {
  const auto add = [&](std::string_view word, Verdict verdict, Sentence what, Sentence remedy = {}) {
    found.push_back({kTopic, word, verdict, std::move(what), std::move(remedy)});
  };
  constexpr const char* kLonger = "Let your mail provider make one of 2048 bits, and publish it.";
  if (key.is_revoked) {
    return add("dkim-revoked", Verdict::kBad, Say("The key at {} was withdrawn.", name),
               "Publish the key that your mail provider signs with now.");
  }
  if (!key.unfit_by.empty()) {
    return add("dkim-unfit", Verdict::kBad,
               Say("The key at {} does not serve e-mail: it says \"{}\".", name, platform::Printable(key.unfit_by, 60)),
               "Publish it without that tag, or the key that your mail provider signs with.");
  }
  if (key.kind == DkimKey::Kind::kUnknown) {
    return add("dkim-unknown-kind", Verdict::kWeak, Say("The key at {} is of a kind that few receivers know.", name),
               "Publish an RSA key of 2048 bits beside it.");
  }
  if (key.kind == DkimKey::Kind::kRsa && key.bits < kShortest) {
    return add("dkim-short", Verdict::kBad,
               Say("The key at {} has {} bits; receivers pass over what has fewer than {}.", name, key.bits, kShortest),
               kLonger);
  }
  if (key.is_for_tests) {
    return add("dkim-tests", Verdict::kWeak, Say("The key at {} is marked as a trial (\"t=y\").", name),
               "Remove the mark: until then receivers treat your mail as not signed.");
  }
  passing = Passing::kYes;
  if (key.kind == DkimKey::Kind::kRsa && key.bits < kAdvised) {
    return add("dkim-short", Verdict::kWeak,
               Say("The key at {} has {} bits, which can be broken at some cost.", name, key.bits), kLonger);
  }
  add("dkim", Verdict::kGood,
      key.kind == DkimKey::Kind::kRsa ? Say("There is an RSA key of {} bits at {}.", key.bits, name)
                                      : Say("There is an Ed25519 key at {}.", name));
}

// A key that nobody named may be one of long ago: what is wrong with it is held against nobody, and of one that is a
// little short only where there is no better one. False where no other counts.
bool KeepGuessesApart(Findings& found, std::size_t from) {
  const auto begin = found.begin() + static_cast<std::ptrdiff_t>(from);
  const auto is_good = [](const Finding& finding) { return finding.verdict == Verdict::kGood; };
  const auto is_a_little_short = [](const Finding& finding) {
    return finding.verdict == Verdict::kWeak && finding.word == "dkim-short";
  };
  const bool any_good = std::any_of(begin, found.end(), is_good);
  bool any_counts = false;
  for (auto finding = begin; finding != found.end(); ++finding) {
    const bool counts = is_good(*finding) || finding->verdict == Verdict::kUnknown || is_a_little_short(*finding);
    any_counts = any_counts || counts;
    if (counts && !(any_good && is_a_little_short(*finding))) continue;
    finding->verdict = Verdict::kNote;
    finding->remedy = Say("If your mail is signed with it: {}", finding->remedy);
  }
  return any_counts;
}

// Adds what is at one name; `is_there` tells whether there was a key at all. False while it is not known.
bool CheckKey(const std::string& name, Answers& answers, Findings& found, bool& is_there, Passing& passing) {
  const net::DnsAnswer* texts = answers.Of(name, net::DnsType::kTxt);
  if (texts == nullptr) return false;
  if (!texts->answered()) {
    // Once, however many names are tried at a server that does not answer.
    const bool is_told = !found.empty() && found.back().topic == kTopic && found.back().word == "no-answer";
    if (!is_told) found.push_back(Unanswered(kTopic, name, *texts));
    passing = std::max(passing, Passing::kUnknown);
    is_there = true;
    return true;
  }
  std::vector<std::string> keys;
  for (const net::DnsRecord& text : texts->records) {
    if (IsDkimKey(text.text)) keys.push_back(text.text);
  }
  if (keys.empty()) return true;
  is_there = true;
  if (keys.size() > 1) {
    found.push_back({kTopic, "two-dkim", Verdict::kBad, Say("There are {} keys at {}.", keys.size(), name),
                     "Leave the one that your mail provider signs with: receivers take either, or none."});
  } else if (const Result<DkimKey> key = ParseDkimKey(keys[0]); key) {
    TellKey(name, *key, found, passing);
  } else {
    found.push_back({kTopic, "dkim-damaged", Verdict::kBad, Say("The key at {} is damaged: {}", name, key.error().what),
                     key.error().remedy});
  }
  return true;
}

}  // namespace

const std::vector<std::string>& UsualSelectors() {
  static const std::vector<std::string> usual = {"default", "dkim", "mail", "selector1", "selector2",
                                                 "s1",      "s2",   "k1",   "key1",      "google"};
  return usual;
}

bool CheckDkim(const SenderQuestion& question, Answers& answers, Findings& found, Ways& ways) {
  const bool is_guess = question.selectors.empty();
  const std::string above = OrganisationalDomain(question.domain);
  ways.key = is_guess ? Passing::kUnknown : Passing::kNo;
  bool is_known = true;
  const std::size_t before = found.size();
  for (const std::string& selector : is_guess ? UsualSelectors() : question.selectors) {
    const std::string name = KeyName(selector, question.domain);
    bool is_there = false;
    is_known = CheckKey(name, answers, found, is_there, ways.key) && is_known;
    if (!is_there && above != question.domain) {
      const std::string name_above = KeyName(selector, above);
      is_known = CheckKey(name_above, answers, found, is_there, ways.organisations_key) && is_known;
    }
    if (!is_guess && !is_there) {
      found.push_back({kTopic, "no-dkim", Verdict::kBad, Say("There is no key at {}.", name),
                       "Publish the key that your mail provider gives for this selector, or check the selector: it "
                       "stands behind \"s=\" in the DKIM-Signature of a message that you sent."});
    }
  }
  if (is_guess && !KeepGuessesApart(found, before) && is_known) {
    found.push_back({kTopic, "dkim-not-found", Verdict::kUnknown,
                     found.size() == before
                         ? Say("No key was found under the usual names at _domainkey.{}.", question.domain)
                         : Say("No key that counts was found under the usual names at _domainkey.{}.", question.domain),
                     "Give the selector that your mail provider signs with: it stands behind \"s=\" in the "
                     "DKIM-Signature of a message that you sent."});
  }
  return is_known;
}

}  // namespace quillcast::domain

#include <algorithm>
#include <optional>
#include <utility>

#include "domain/sender/dkim_key.h"
#include "domain/sender/dmarc_record.h"
#include "domain/sender/sender_topics.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using enum FindingKind;

constexpr int kShortest = 1024;  // RFC 8301 3.2: receivers need not take shorter ones, signers are to use 2048
constexpr int kAdvised = 2048;
constexpr const char* kLonger = "Let your mail provider make one of 2048 bits, and publish it.";

std::string KeyName(const std::string& selector, const std::string& domain) {
  return selector + "._domainkey." + domain;
}

// What the place of a key is worth to signatures.
enum class KeyWorth { kPending, kNoKey, kNotCounting, kUnknown, kALittleShort, kGood };

struct KeyPlace {
  KeyWorth worth = KeyWorth::kPending;
  std::optional<Finding> finding = {};  // of what is there
};

KeyPlace OfKey(const std::string& name, const DkimKey& key) {
  const bool is_rsa = key.kind == DkimKey::Kind::kRsa;
  if (key.is_revoked) {
    return {KeyWorth::kNotCounting, Found(kDkimRevoked, Say("The key at {} was withdrawn.", name),
                                          "Publish the key that your mail provider signs with now.")};
  }
  if (!key.unfit_by.empty()) {
    return {
        KeyWorth::kNotCounting,
        Found(kDkimUnfit,
              Say("The key at {} does not serve e-mail: it says \"{}\".", name, platform::Printable(key.unfit_by, 60)),
              "Publish it without that tag, or the key that your mail provider signs with.")};
  }
  if (key.kind == DkimKey::Kind::kUnknown) {
    return {KeyWorth::kNotCounting,
            Found(kDkimUnknownKind, Say("The key at {} is of a kind that few receivers know.", name),
                  "Publish an RSA key of 2048 bits beside it.")};
  }
  if (is_rsa && key.bits < kShortest) {
    return {KeyWorth::kNotCounting, Found(kDkimShort,
                                          Say("The key at {} has {} bits; receivers pass over what has fewer than {}.",
                                              name, key.bits, kShortest),
                                          kLonger)};
  }
  if (key.is_for_tests) {
    return {KeyWorth::kNotCounting, Found(kDkimTests, Say("The key at {} is marked as a trial (\"t=y\").", name),
                                          "Remove the mark, as until then receivers treat your mail as not signed.")};
  }
  if (is_rsa && key.bits < kAdvised) {
    return {KeyWorth::kALittleShort,
            Found(kDkimALittleShort,
                  Say("The key at {} has {} bits, which can be broken at some cost.", name, key.bits), kLonger)};
  }
  return {KeyWorth::kGood, Found(kDkim, is_rsa ? Say("There is an RSA key of {} bits at {}.", key.bits, name)
                                               : Say("There is an Ed25519 key at {}.", name))};
}

KeyPlace CheckKey(const std::string& name, Answers& answers) {
  const auto [answer, keys] = answers.TextsAt(name, IsDkimKey);
  if (answer == nullptr) return {};
  if (!answer->answered()) return {KeyWorth::kUnknown, Unanswered(kDkimNoAnswer, name, *answer)};
  if (keys.empty()) return {KeyWorth::kNoKey};
  if (keys.size() > 1) {
    return {KeyWorth::kNotCounting,
            Found(kTwoDkim, Say("There are {} keys at {}.", keys.size(), name),
                  "Leave the one that your mail provider signs with, as receivers take either, or none.")};
  }
  const Result<DkimKey> key = ParseDkimKey(keys[0]);
  if (key) return OfKey(name, *key);
  return {KeyWorth::kNotCounting,
          Found(kDkimDamaged, Say("The key at {} is damaged: {}", name, key.error().what), key.error().remedy)};
}

Passing PassingWith(KeyWorth worth) {
  switch (worth) {
    case KeyWorth::kGood:
    case KeyWorth::kALittleShort:
      return Passing::kYes;
    case KeyWorth::kUnknown:
      return Passing::kUnknown;
    default:
      return Passing::kNo;
  }
}

bool Counts(const KeyPlace& place) { return place.worth >= KeyWorth::kUnknown; }

// A key that nobody named may be one of long ago: what is wrong with it is held against nobody, and of one that is a
// little short only where there is no better one.
void HoldAgainstNobody(std::vector<KeyPlace>& places) {
  const bool any_good =
      std::any_of(places.begin(), places.end(), [](const auto& place) { return place.worth == KeyWorth::kGood; });
  for (KeyPlace& place : places) {
    if (!place.finding || (Counts(place) && !(any_good && place.worth == KeyWorth::kALittleShort))) continue;
    place.finding->verdict = Verdict::kNote;
    place.finding->remedy = Say("If your mail is signed with it: {}", place.finding->remedy);
  }
}

// That a server does not answer is told once, however many names are tried at it.
void Tell(std::vector<KeyPlace> places, Findings& found) {
  for (KeyPlace& place : places) {
    const bool is_told = place.worth == KeyWorth::kUnknown && !found.empty() && found.back().kind == kDkimNoAnswer;
    if (place.finding && !is_told) found.push_back(*std::move(place.finding));
  }
}

}  // namespace

const std::vector<std::string>& UsualSelectors() {
  static const std::vector<std::string> usual = {"default", "dkim", "mail", "selector1", "selector2",
                                                 "s1",      "s2",   "k1",   "key1",      "google"};
  return usual;
}

KeysPassing CheckDkim(const SenderQuestion& question, Answers& answers, Findings& found) {
  const bool is_guess = question.selectors.empty();
  const std::string above = OrganisationalDomain(question.domain);
  KeysPassing keys{.own = is_guess ? Passing::kUnknown : Passing::kNo};
  std::vector<KeyPlace> places;
  const auto look = [&](const std::string& name, Passing& passing) {
    const KeyWorth worth = places.emplace_back(CheckKey(name, answers)).worth;
    if (worth == KeyWorth::kPending) keys.known = Known::kNotYet;
    passing = std::max(passing, PassingWith(worth));
    return worth > KeyWorth::kNoKey;
  };
  for (const std::string& selector : is_guess ? UsualSelectors() : question.selectors) {
    const std::string name = KeyName(selector, question.domain);
    const bool is_there =
        look(name, keys.own) || (above != question.domain && look(KeyName(selector, above), keys.organisations));
    if (is_guess || is_there) continue;
    places.back().finding =
        Found(kNoDkim, Say("There is no key at {}.", name),
              "Publish the key that your mail provider gives for this selector, or check the selector: it "
              "stands behind \"s=\" in the DKIM-Signature of a message that you sent.");
  }
  if (is_guess) HoldAgainstNobody(places);
  const bool any_there = std::any_of(places.begin(), places.end(), [](const auto& place) { return !!place.finding; });
  const bool any_counts = std::any_of(places.begin(), places.end(), Counts);
  Tell(std::move(places), found);
  if (is_guess && !any_counts && keys.known == Known::kYes) {
    found.push_back(Found(
        kDkimNotFound,
        any_there ? Say("No key that counts was found under the usual names at _domainkey.{}.", question.domain)
                  : Say("No key was found under the usual names at _domainkey.{}.", question.domain),
        "Give the selector that your mail provider signs with: it stands behind \"s=\" in the DKIM-Signature of a "
        "message that you sent."));
  }
  return keys;
}

}  // namespace quillcast::domain

#include "run/frozen/frozen_pace.h"

#include "account/account_pace.h"
#include "run/frozen/json_fields.h"

namespace quillcast::run {
namespace {

using nlohmann::json;

constexpr std::int64_t kLatest = 9'000'000'000;  // in the year 2255, which a Moment holds

json JsonOf(const PaceTexts& texts) {
  json written = json::object();
  for (const auto& [name, text, key] : account::PaceNames()) {
    if (!(texts.*text).empty()) written[std::string(name)] = JsonOfOctets(texts.*text);
  }
  return written;
}

PaceTexts TextsIn(const json& from, JsonFields& fields) {
  PaceTexts texts;
  if (!from.is_object()) fields.Refuse();
  for (const auto& [name, text, key] : account::PaceNames()) {
    const std::string field(name);
    if (fields.Has(from, field.c_str())) texts.*text = fields.Octets(fields.At(from, field.c_str()));
  }
  return texts;
}

}  // namespace

std::string FrozenPaceText(const FrozenPace& pace) {
  json written{{"options", JsonOf(pace.options)}, {"account", JsonOf(pace.account)}};
  if (pace.begin) written["begin"] = std::chrono::floor<std::chrono::seconds>(*pace.begin).time_since_epoch().count();
  return written.dump();
}

// The options were read once before they were kept; what the account says is read anew.
Result<std::optional<FrozenPace>> ReadFrozenPace(std::string_view text, const platform::Clock& clock) {
  if (text.empty()) return std::optional<FrozenPace>();
  const json read = json::parse(text, nullptr, false);
  JsonFields fields;
  FrozenPace pace{TextsIn(fields.At(read, "options"), fields), TextsIn(fields.At(read, "account"), fields)};
  if (fields.Has(read, "begin")) {
    pace.begin = Moment(std::chrono::seconds(fields.Number(fields.At(read, "begin"), 0, kLatest)));
  }
  if (fields.fine() && ReadPace(pace.options, clock)) return std::optional(std::move(pace));
  return Error{Failure::kBadData, "How fast the run was told to go cannot be read: the journal of runs is damaged.",
               "Begin a new run."};
}

PaceTexts OptionsIn(std::string_view text, const platform::Clock& clock) {
  auto frozen = IgnoreErrors(ReadFrozenPace(text, clock), std::nullopt);
  if (!frozen) return {};
  if (frozen->begin && *frozen->begin > clock.Now()) frozen->options.at = MomentAsWritten(*frozen->begin, clock);
  return std::move(frozen->options);
}

std::vector<std::string> ChangedSince(const PaceTexts& then, const PaceTexts& options, const PaceTexts& account) {
  const PaceTexts changed = account::InsteadOf(then, account);
  std::vector<std::string> names;
  for (const auto& [name, text, key] : account::PaceNames()) {
    if ((options.*text).empty() && !(changed.*text).empty()) names.emplace_back(name);
  }
  return names;
}

}  // namespace quillcast::run

#include "domain/sender/mta_sts.h"

#include <optional>

#include "domain/sender/tag_list.h"
#include "net/idna.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

constexpr std::int64_t kLongestAge = 31557600;  // a year

std::optional<StsPolicy::Mode> ModeOf(std::string_view word) {
  if (word == "enforce") return StsPolicy::Mode::kEnforce;
  if (word == "testing") return StsPolicy::Mode::kTesting;
  if (word == "none") return StsPolicy::Mode::kNone;
  return std::nullopt;
}

Error BadPolicy(Sentence what) {
  return {Failure::kBadData, std::move(what),
          "Write the policy as \"version: STSv1\", \"mode: enforce\", a line \"mx: ...\" for each server and "
          "\"max_age: ...\" in seconds."};
}

}  // namespace

bool IsStsRecord(std::string_view record) { return platform::Trim(record.substr(0, record.find(';'))) == "v=STSv1"; }

Result<std::string> ParseStsRecord(std::string_view record) {
  const Result<TagList> tags = TagList::Parse(record);
  if (!tags) return tags.error();
  const std::string_view id = tags->ValueOf("id");
  if (id.empty()) {
    return Error{Failure::kBadData, "The record has no \"id=\".",
                 "Give it one, and another whenever the policy changes."};
  }
  return std::string(id);
}

Result<StsPolicy> ParseStsPolicy(std::string_view text) {
  StsPolicy policy;
  std::string_view version;
  std::optional<StsPolicy::Mode> mode;
  std::optional<std::int64_t> max_age;
  for (const std::string_view line : platform::Split(text, '\n')) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string_view key = platform::Trim(line.substr(0, colon));
    const std::string_view value = platform::Trim(line.substr(colon + 1));
    // The first of a key that stands twice counts, but for "mx".
    if (key == "version" && version.empty()) version = value;
    if (key == "mode" && !mode) mode = ModeOf(value);
    if (key == "max_age" && !max_age) max_age = platform::WholeNumberBetween(value, 0, kLongestAge);
    if (key == "mx") policy.servers.push_back(platform::AsciiLower(value));
  }
  if (version != "STSv1") return BadPolicy("The policy does not say \"version: STSv1\".");
  if (!mode) return BadPolicy("The policy has no mode that is known.");
  if (!max_age) return BadPolicy("The policy has no \"max_age\" up to a year.");
  if (*mode != StsPolicy::Mode::kNone && policy.servers.empty()) return BadPolicy("The policy names no server.");
  policy.mode = *mode;
  policy.max_age = *max_age;
  return policy;
}

bool StsNames(std::string_view pattern, std::string_view server) {
  server = net::WithoutRootDot(server);
  if (!pattern.starts_with("*.")) return platform::EqualsIgnoringAsciiCase(pattern, server);
  const std::size_t dot = server.find('.');
  return dot != std::string_view::npos && dot > 0 &&
         platform::EqualsIgnoringAsciiCase(pattern.substr(1), server.substr(dot));
}

}  // namespace quillcast::domain

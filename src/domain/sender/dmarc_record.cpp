#include "domain/sender/dmarc_record.h"

#include <libpsl.h>

#include <algorithm>
#include <optional>

#include "domain/sender/tag_list.h"
#include "net/idna.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

std::optional<DmarcRecord::Policy> PolicyOf(std::string_view word) {
  if (platform::EqualsIgnoringAsciiCase(word, "none")) return DmarcRecord::Policy::kNone;
  if (platform::EqualsIgnoringAsciiCase(word, "quarantine")) return DmarcRecord::Policy::kQuarantine;
  if (platform::EqualsIgnoringAsciiCase(word, "reject")) return DmarcRecord::Policy::kReject;
  return std::nullopt;
}

// `tag` has no policy; without the dot at the sentence's end.
Error NoPolicy(const TagList& tags, std::string_view tag) {
  const Sentence what = tags.CountOf(tag) == 0
                            ? Say("There is no \"{}=\"", tag)
                            : Say("\"{}={}\" is no policy", tag, platform::Printable(tags.ValueOf(tag), 60));
  return {Failure::kBadData, what,
          tag == "p" ? "Write \"p=none\", \"p=quarantine\" or \"p=reject\" behind \"v=DMARC1\"."
                     : "Write \"sp=none\", \"sp=quarantine\" or \"sp=reject\", or remove that tag."};
}

}  // namespace

bool IsDmarc(std::string_view record) {
  const std::string_view version = platform::Trim(record.substr(0, record.find(';')));
  const std::size_t equals = version.find('=');
  return equals != std::string_view::npos && platform::Trim(version.substr(0, equals)) == "v" &&
         platform::Trim(version.substr(equals + 1)) == "DMARC1";
}

Result<DmarcRecord> ParseDmarc(std::string_view record) {
  const TagList tags = TagList::Read(record);
  if (tags.CountOf("p") > 1) {
    return Error{Failure::kBadData, "\"p=\" stands twice.", "Leave one policy in the record."};
  }
  DmarcRecord found;
  for (const std::string_view address : platform::Split(tags.ValueOf("rua"), ',')) {
    if (const std::string_view trimmed = platform::Trim(address); !trimmed.empty())
      found.reports_to.emplace_back(trimmed);
  }
  found.dkim_is_strict = platform::EqualsIgnoringAsciiCase(tags.ValueOf("adkim"), "s");
  found.percent = static_cast<int>(platform::WholeNumberBetween(tags.ValueOf("pct"), 0, 100).value_or(100));
  const std::optional<DmarcRecord::Policy> policy = PolicyOf(tags.ValueOf("p"));
  const std::optional<DmarcRecord::Policy> below = PolicyOf(tags.ValueOf("sp"));
  found.names_subdomains = tags.CountOf("sp") > 0;
  if (policy && (below || !found.names_subdomains)) {
    found.policy = *policy;
    found.subdomain_policy = below.value_or(*policy);
    return found;
  }
  const Error mistake = NoPolicy(tags, policy ? "sp" : "p");
  if (std::none_of(found.reports_to.begin(), found.reports_to.end(), IsReportPlace)) {
    return Error{mistake.failure, Say("{}.", mistake.what), mistake.remedy};
  }
  found.mistake = mistake.what;
  found.remedy = mistake.remedy;
  return found;
}

bool IsReportPlace(std::string_view place) {
  const std::size_t colon = place.find(':');
  return colon != std::string_view::npos && colon > 0 && colon + 1 < place.size();
}

DmarcRecord::Policy DmarcRecord::For(bool below) const {
  const Policy asked = below ? subdomain_policy : policy;
  if (percent > 0) return asked;
  return asked == Policy::kReject ? Policy::kQuarantine : Policy::kNone;
}

std::string OrganisationalDomain(const std::string& domain) {
  const std::string name = platform::AsciiLower(net::WithoutRootDot(domain));
  const char* found = psl_registrable_domain(psl_builtin(), name.c_str());
  return found == nullptr ? name : std::string(found);
}

}  // namespace quillcast::domain

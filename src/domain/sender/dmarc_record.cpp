#include "domain/sender/dmarc_record.h"

#include <libpsl.h>

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
  std::optional<DmarcRecord::Policy> policy = PolicyOf(tags.ValueOf("p"));
  // One that asks for reports alone watches (RFC 7489 6.6.3).
  if (!policy && !tags.ValueOf("rua").empty()) policy = DmarcRecord::Policy::kNone;
  if (!policy) {
    return Error{Failure::kBadData, Say("\"p={}\" is no policy.", platform::Printable(tags.ValueOf("p"), 60)),
                 "Write \"p=none\", \"p=quarantine\" or \"p=reject\" behind \"v=DMARC1\"."};
  }
  DmarcRecord found;
  found.policy = *policy;
  const auto below = PolicyOf(tags.ValueOf("sp"));
  found.subdomain_policy = below.value_or(*policy);
  found.names_subdomains = below.has_value();
  found.dkim_is_strict = platform::EqualsIgnoringAsciiCase(tags.ValueOf("adkim"), "s");
  found.percent = static_cast<int>(platform::WholeNumberBetween(tags.ValueOf("pct"), 0, 100).value_or(100));
  for (const std::string_view address : platform::Split(tags.ValueOf("rua"), ',')) {
    if (const std::string_view trimmed = platform::Trim(address); !trimmed.empty())
      found.reports_to.emplace_back(trimmed);
  }
  return found;
}

std::string OrganisationalDomain(const std::string& domain) {
  const std::string name = platform::AsciiLower(net::WithoutRootDot(domain));
  const char* found = psl_registrable_domain(psl_builtin(), name.c_str());
  return found == nullptr ? name : std::string(found);
}

}  // namespace quillcast::domain

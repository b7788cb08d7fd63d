#include "recipients/import/ldif_lines.h"

#include <algorithm>
#include <array>

#include "platform/text.h"
#include "recipients/import/contact_card.h"
#include "recipients/import/heading_names.h"
#include "recipients/import/unfolded_lines.h"

namespace quillcast::recipients {
namespace {

using platform::EqualsIgnoringAsciiCase;

constexpr std::size_t kNoField = kFieldCount + 1;

struct Attribute {
  std::string_view name;
  std::size_t field;
};
// RFC 4519, RFC 2798, and what address books add to them.
constexpr std::array<Attribute, 47> kAttributes = {{{"mail", kEmail},
                                                    {"email", kEmail},
                                                    {"emailAddress", kEmail},
                                                    {"rfc822Mailbox", kEmail},
                                                    {"mozillaSecondEmail", kSecondEmail},
                                                    {"personalTitle", kTitle},
                                                    {"givenName", kFirstName},
                                                    {"gn", kFirstName},
                                                    {"sn", kLastName},
                                                    {"surname", kLastName},
                                                    {"cn", kWholeName},
                                                    {"commonName", kWholeName},
                                                    {"displayName", kWholeName},
                                                    {"c", kCountry},
                                                    {"co", kCountry},
                                                    {"countryName", kCountry},
                                                    {"friendlyCountryName", kCountry},
                                                    {"mozillaHomeCountryName", kCountry},
                                                    {"st", kState},
                                                    {"stateOrProvinceName", kState},
                                                    {"mozillaHomeState", kState},
                                                    {"l", kCity},
                                                    {"localityName", kCity},
                                                    {"mozillaHomeLocalityName", kCity},
                                                    {"street", kStreet},
                                                    {"streetAddress", kStreet},
                                                    {"postalAddress", kStreet},
                                                    {"mozillaHomeStreet", kStreet},
                                                    {"mozillaWorkStreet2", kStreet2},
                                                    {"mozillaHomeStreet2", kStreet2},
                                                    {"postalCode", kZipCode},
                                                    {"mozillaHomePostalCode", kZipCode},
                                                    {"telephoneNumber", kPhone},
                                                    {"mobile", kPhone},
                                                    {"homePhone", kPhone},
                                                    {"facsimileTelephoneNumber", kFax},
                                                    {"fax", kFax},
                                                    {"o", kCompany},
                                                    {"organizationName", kCompany},
                                                    {"company", kCompany},
                                                    {"title", kJobTitle},
                                                    {"labeledURI", kWebSite},
                                                    {"mozillaWorkUrl", kWebSite},
                                                    {"mozillaHomeUrl", kWebSite},
                                                    {"businessCategory", kCategories},
                                                    {"description", kNote},
                                                    {"info", kNote}}};

// "cn;lang-de:: ..." is a "cn".
std::string_view NameOf(std::string_view line) { return line.substr(0, line.find_first_of(":;")); }

std::size_t FieldOf(std::string_view line) {
  const std::string_view name = NameOf(line);
  const auto* found = std::find_if(kAttributes.begin(), kAttributes.end(),
                                   [name](const Attribute& row) { return EqualsIgnoringAsciiCase(row.name, name); });
  return found == kAttributes.end() ? kNoField : found->field;
}

bool IsNamed(std::string_view line, std::string_view name) { return EqualsIgnoringAsciiCase(NameOf(line), name); }

bool IsWanted(std::string_view line) {
  return line.empty() || IsNamed(line, "dn") || IsNamed(line, "changetype") || FieldOf(line) != kNoField;
}

std::string ValueOf(std::string_view line) {
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return {};
  std::string_view value = line.substr(colon + 1);
  if (value.starts_with('<')) return {};
  if (!value.starts_with(':')) return std::string(platform::Trim(value));
  return DecodeContactText(DecodeContactBase64(value.substr(1)), "");
}

class Entries {
 public:
  explicit Entries(const FieldLines::Take& take) : take_(take) {}

  bool TakeLine(std::string_view line) {
    if (line.empty()) return EndEntry();
    if (IsNamed(line, "dn")) is_entry_ = true;
    if (IsNamed(line, "changetype")) is_added_ = EqualsIgnoringAsciiCase(ValueOf(line), "add");
    const std::size_t field = FieldOf(line);
    if (field == kNoField) return true;
    is_entry_ = true;
    Put(field, ValueOf(line));
    return true;
  }

  bool EndEntry() {
    const bool is_to_take = is_entry_ && is_added_;
    if (is_entry_) ++number_;
    is_entry_ = false;
    is_added_ = true;
    const bool goes_on = !is_to_take || take_({.fields = card_.Fields(), .number = number_});
    card_.Clear();
    return goes_on;
  }

 private:
  void Put(std::size_t field, std::string value) {
    // The lines of a postal address (RFC 4517 3.3.28), and the label behind an address of the web.
    if (field == kStreet) value = platform::ReplaceAll(value, "$", ", ");
    if (field == kWebSite) value.resize(std::min(value.find(' '), value.size()));
    if (field == kWholeName) {
      card_.PutWholeName(value);
    } else if (field == kEmail) {
      card_.PutEmail(value, false);
    } else {
      card_.Put(field, value);
    }
  }

  const FieldLines::Take& take_;
  ContactCard card_;
  bool is_entry_ = false;
  bool is_added_ = true;
  std::int64_t number_ = 0;
};

constexpr UnfoldingRules kLdifUnfolding = {.is_wanted = IsWanted,
                                           .goes_on_behind_equals = [](std::string_view) { return false; }};

}  // namespace

FileFacts LdifLines::Facts() const {
  return {.format = FileFormat::kLdif, .encoding = source_.encoding(), .size = source_.size()};
}

Result<void> LdifLines::Read(const Take& take) {
  Entries entries(take);
  bool goes_on = true;
  auto read =
      ReadUnfolded(source_, kLdifUnfolding, [&](std::string_view line) { return goes_on = entries.TakeLine(line); });
  if (read && goes_on) entries.EndEntry();
  return read;
}

}  // namespace quillcast::recipients

#include "recipients/import/vcard_lines.h"

#include <algorithm>
#include <array>
#include <vector>

#include "mime/quoted_printable.h"
#include "platform/text.h"
#include "recipients/import/contact_card.h"
#include "recipients/import/unfolded_lines.h"

namespace quillcast::recipients {
namespace {

using platform::EqualsIgnoringAsciiCase;

enum class Property : std::uint8_t {
  kBegin,
  kEnd,
  kName,
  kFormattedName,
  kEmailAddress,
  kPostalAddress,
  kTelephone,
  kOrganization,
  kPosition,
  kUrl,
  kCategory,
  kRemark,
  kAgent,
  kOther,
};

constexpr std::array<std::pair<std::string_view, Property>, 14> kProperties = {{{"BEGIN", Property::kBegin},
                                                                                {"END", Property::kEnd},
                                                                                {"N", Property::kName},
                                                                                {"FN", Property::kFormattedName},
                                                                                {"EMAIL", Property::kEmailAddress},
                                                                                {"ADR", Property::kPostalAddress},
                                                                                {"TEL", Property::kTelephone},
                                                                                {"ORG", Property::kOrganization},
                                                                                {"TITLE", Property::kPosition},
                                                                                {"ROLE", Property::kPosition},
                                                                                {"URL", Property::kUrl},
                                                                                {"CATEGORIES", Property::kCategory},
                                                                                {"NOTE", Property::kRemark},
                                                                                {"AGENT", Property::kAgent}}};

// "item1.TEL;TYPE=home:..." is a TEL.
Property PropertyOf(std::string_view line) {
  std::string_view name = line.substr(0, line.find_first_of(":;"));
  name.remove_prefix(std::min(name.rfind('.') + 1, name.size()));
  const auto* found = std::find_if(kProperties.begin(), kProperties.end(),
                                   [name](const auto& row) { return EqualsIgnoringAsciiCase(row.first, name); });
  return found == kProperties.end() ? Property::kOther : found->second;
}

// How much stands before the first of some characters that is in no quotes; all of it where there is none.
std::size_t LengthBefore(std::string_view any, std::string_view text) {
  bool quoted = false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '"') quoted = !quoted;
    if (!quoted && any.find(text[at]) != std::string_view::npos) return at;
  }
  return text.size();
}

// Where the value begins.
std::size_t ValueAt(std::string_view line) { return std::min(LengthBefore(":", line) + 1, line.size()); }

struct Parameters {
  bool is_quoted_printable = false;
  bool is_base64 = false;
  bool is_fax = false;
  bool is_preferred = false;
  std::string_view charset;
};

// A type, an encoding, or the mark of the one that is preferred; versions differ in whether they name what it is.
void TakeWord(std::string_view word, Parameters& parameters) {
  parameters.is_quoted_printable |= EqualsIgnoringAsciiCase(word, "QUOTED-PRINTABLE");
  parameters.is_base64 |= EqualsIgnoringAsciiCase(word, "BASE64") || EqualsIgnoringAsciiCase(word, "B");
  parameters.is_fax |= EqualsIgnoringAsciiCase(word, "FAX");
  parameters.is_preferred |= EqualsIgnoringAsciiCase(word, "PREF");
}

Parameters ParametersOf(std::string_view before_value) {
  Parameters parameters;
  while (!before_value.empty()) {
    const auto end = LengthBefore(";:", before_value);
    const std::string_view item = before_value.substr(0, end);
    before_value.remove_prefix(std::min(end + 1, before_value.size()));
    const auto equals = item.find('=');
    const std::string_view name = item.substr(0, equals);
    std::string_view words = equals == std::string_view::npos ? item : item.substr(equals + 1);
    if (EqualsIgnoringAsciiCase(name, "CHARSET")) parameters.charset = words;
    if (EqualsIgnoringAsciiCase(name, "PREF"))
      parameters.is_preferred |= words == "1" || equals == std::string_view::npos;
    while (!words.empty()) {
      const auto comma = std::min(words.find_first_of(",\""), words.size());
      TakeWord(words.substr(0, comma), parameters);
      words.remove_prefix(std::min(comma + 1, words.size()));
    }
  }
  return parameters;
}

// Cut at the semicolons that no backslash stands before, and what backslashes stand for put in.
std::vector<std::string> Components(std::string_view value) {
  std::vector<std::string> components(1);
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (value[at] == ';') {
      components.emplace_back();
    } else if (value[at] == '\\' && at + 1 < value.size()) {
      const char escaped = value[++at];
      components.back() += escaped == 'n' || escaped == 'N' ? '\n' : escaped;
    } else {
      components.back() += value[at];
    }
  }
  return components;
}

std::string Whole(std::string_view value) {
  std::string whole;
  for (const std::string& component : Components(value)) whole += (whole.empty() ? "" : ";") + component;
  return whole;
}

void PutAll(ContactCard& card, std::string_view value,
            std::initializer_list<std::pair<std::size_t, std::size_t>> places, bool preferred) {
  const auto components = Components(value);
  std::vector<std::pair<std::size_t, std::string>> values;
  for (const auto& [place, field] : places) {
    values.emplace_back(field, place < components.size() ? components[place] : std::string());
  }
  card.PutTogether(values, preferred);
}

void PutTelephone(ContactCard& card, std::string_view value, const Parameters& parameters) {
  constexpr std::string_view kUri = "tel:";
  if (platform::StartsWithIgnoringAsciiCase(value, kUri)) value.remove_prefix(kUri.size());
  card.Put(parameters.is_fax ? kFax : kPhone, Whole(value), parameters.is_preferred);
}

std::string ValueOf(std::string_view value, const Parameters& parameters) {
  if (parameters.is_quoted_printable) return DecodeContactText(mime::DecodeQuotedPrintable(value), parameters.charset);
  if (parameters.is_base64) return DecodeContactText(DecodeContactBase64(value), parameters.charset);
  return std::string(value);
}

void PutProperty(ContactCard& card, Property property, std::string_view value, const Parameters& parameters) {
  const bool preferred = parameters.is_preferred;
  switch (property) {
    case Property::kName:
      return PutAll(card, value, {{0, kLastName}, {1, kFirstName}, {3, kTitle}}, preferred);
    case Property::kFormattedName:
      return card.PutWholeName(Whole(value));
    case Property::kEmailAddress:
      return card.PutEmail(Whole(value), preferred);
    case Property::kPostalAddress:
      return PutAll(card, value, {{1, kStreet2}, {2, kStreet}, {3, kCity}, {4, kState}, {5, kZipCode}, {6, kCountry}},
                    preferred);
    case Property::kTelephone:
      return PutTelephone(card, value, parameters);
    case Property::kOrganization:
      return PutAll(card, value, {{0, kCompany}}, preferred);
    case Property::kPosition:
      return card.Put(kJobTitle, Whole(value), preferred);
    case Property::kUrl:
      return card.Put(kWebSite, Whole(value), preferred);
    case Property::kCategory:
      return card.Put(kCategories, Whole(value));
    case Property::kRemark:
      return card.Put(kNote, Whole(value));
    case Property::kBegin:
    case Property::kEnd:
    case Property::kAgent:
    case Property::kOther:
      break;
  }
}

class Cards {
 public:
  explicit Cards(const FieldLines::Take& take) : take_(take) {}

  bool TakeLine(std::string_view line) {
    const Property property = PropertyOf(line);
    const bool follows_agent = std::exchange(follows_agent_, property == Property::kAgent);
    if (property == Property::kBegin) return Begin(follows_agent);
    if (property == Property::kEnd) return End();
    if (depth_ != 1) return true;
    const std::size_t value = ValueAt(line);
    const Parameters parameters = ParametersOf(line.substr(0, value));
    PutProperty(card_, property, ValueOf(line.substr(value), parameters), parameters);
    return true;
  }
  // A last card counts without its end.
  void Finish() {
    if (depth_ > 0) Told();
  }

 private:
  // An agent's card stands within another one; else a card whose end is missing ends where the next one begins.
  bool Begin(bool is_agents) {
    if (is_agents && depth_ > 0) {
      ++depth_;
      return true;
    }
    const bool goes_on = depth_ == 0 || Told();
    depth_ = 1;
    card_.Clear();
    return goes_on;
  }
  bool End() {
    if (depth_ == 0 || --depth_ > 0) return true;
    return Told();
  }
  bool Told() { return take_({.fields = card_.Fields(), .number = ++number_}); }

  const FieldLines::Take& take_;
  ContactCard card_;
  int depth_ = 0;  // of the cards that are open; those within another one count for nothing
  bool follows_agent_ = false;
  std::int64_t number_ = 0;
};

constexpr UnfoldingRules kVcardUnfolding = {
    .is_wanted = [](std::string_view line) { return PropertyOf(line) != Property::kOther; },
    .goes_on_behind_equals =
        [](std::string_view line) { return ParametersOf(line.substr(0, ValueAt(line))).is_quoted_printable; }};

}  // namespace

FileFacts VCardLines::Facts() const {
  return {.format = FileFormat::kVCard, .encoding = source_.encoding(), .size = source_.size()};
}

Result<void> VCardLines::Read(const Take& take) {
  Cards cards(take);
  bool goes_on = true;
  auto read =
      ReadUnfolded(source_, kVcardUnfolding, [&](std::string_view line) { return goes_on = cards.TakeLine(line); });
  if (read && goes_on) cards.Finish();
  return read;
}

}  // namespace quillcast::recipients

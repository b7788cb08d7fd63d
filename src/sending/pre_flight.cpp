#include "sending/pre_flight.h"

#include <fmt/format.h>

#include "platform/text.h"
#include "recipients/envelope_address.h"

namespace quillcast::sending {
namespace {

class Look {
 public:
  Look(const MessageTemplate& message, PreFlight& found)
      : message_(message), found_(found), used_(message.UsedFields()) {
    for (std::size_t i = 0; i < used_.size(); ++i) {
      if (used_[i]) found_.empty_fields.push_back({i, 0, {}});
    }
  }

  void At(const recipients::Recipient& row) {
    ++found_.recipients;
    const auto address = recipients::EnvelopeAddress(row.email());
    if (!address) ++found_.without_address;
    for (auto& empty : found_.empty_fields) {
      if (!row.values[empty.field].empty()) continue;
      if (empty.recipients++ == 0) empty.first = row.email();
    }
    if (message_.is_html() && HasMarkup(row) && found_.markup_values++ == 0) found_.first_with_markup = row.email();
    if (address && found_.largest_message == 0 && !message_.trouble()) found_.largest_message = SizeFor(row, *address);
  }

 private:
  bool HasMarkup(const recipients::Recipient& row) const {
    for (std::size_t i = 0; i < used_.size(); ++i) {
      if (used_[i] && row.values[i].find_first_of("<&") != std::string::npos) return true;
    }
    return false;
  }

  std::uint64_t SizeFor(const recipients::Recipient& row, const std::string& address) const {
    std::array<std::string, compose::kMergeFields.size()> changed;
    RenderedMessage rendered;
    return message_.Render(compose::ValuesForMerge(row, changed), address, 1, rendered) ? rendered.size() : 0;
  }

  const MessageTemplate& message_;
  PreFlight& found_;
  std::bitset<compose::kMergeFields.size()> used_;
};

}  // namespace

Result<PreFlight> LookOver(recipients::RecipientCursor rows, const compose::MessageDocument& document,
                           const MessageTemplate& message, const platform::CancelToken& cancel) {
  PreFlight found;
  found.unknown_tags =
      compose::UnknownTags(document.subject + "\n" + document.html + "\n" + document.text.value_or(""));
  Look look(message, found);
  recipients::Recipient row;
  for (;;) {
    if (cancel.Requested() != platform::Stop::kNone) {
      return Error{Failure::kTryAgain, "Stopped before anything was sent.", ""};
    }
    const auto more = rows.Next(row);
    if (!more) return more.error();
    if (!*more) break;
    look.At(row);
  }
  std::erase_if(found.empty_fields, [](const auto& empty) { return empty.recipients == 0; });
  return found;
}

std::vector<std::string> Describe(const PreFlight& findings) {
  std::vector<std::string> lines;
  for (const auto& tag : findings.unknown_tags) {
    lines.push_back(fmt::format("Unknown tag {}: it goes out as it stands.", platform::Printable(tag)));
  }
  if (findings.unknown_tags.size() == compose::kMostUnknownTags) {
    lines.push_back(
        fmt::format("There may be more unknown tags: no more than {} are looked for.", compose::kMostUnknownTags));
  }
  for (const auto& empty : findings.empty_fields) {
    lines.push_back(fmt::format("{} no value for {} (the first is {}).",
                                platform::Counted(empty.recipients, "recipient has", "recipients have"),
                                compose::kMergeFields[empty.field].tag, platform::Printable(empty.first, 100)));
  }
  if (findings.markup_values > 0) {
    lines.push_back(
        fmt::format("{} \"<\" or \"&\" in a value, which goes into the HTML as it stands (the first is {}).",
                    platform::Counted(findings.markup_values, "recipient has", "recipients have"),
                    platform::Printable(findings.first_with_markup, 100)));
  }
  if (findings.without_address > 0) {
    lines.push_back(fmt::format("{} no address that a message can be sent to.",
                                platform::Counted(findings.without_address, "entry has", "entries have")));
  }
  return lines;
}

}  // namespace quillcast::sending

#include "run/pre_flight.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "account/account_connection.h"
#include "document/designs.h"
#include "document/local_links.h"
#include "html/local_pictures.h"
#include "platform/text.h"
#include "smtp/client/client.h"
#include "smtp/envelope_address.h"
#include "smtp/outcome_text.h"

namespace quillcast::run {
namespace {

constexpr std::chrono::seconds kPatience{10};  // for each step of asking the server

class Look {
 public:
  Look(const message::MessageTemplate& message, PreFlight& found)
      : message_(message), found_(found), used_(message.UsedFields()) {
    for (std::size_t i = 0; i < used_.size(); ++i) {
      if (used_[i]) found_.empty_fields.push_back({i, 0, {}});
    }
  }

  void At(const recipients::Recipient& row) {
    ++found_.recipients;
    const auto address = smtp::EnvelopeAddress(row.email());
    if (!address) ++found_.without_address;
    for (auto& empty : found_.empty_fields) {
      if (!row.values[empty.field].empty()) continue;
      if (empty.recipients++ == 0) empty.first = row.email();
    }
    if (!SubjectFits(row) && found_.subjects_beyond_set++ == 0) found_.first_beyond_set = row.email();
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

  bool SubjectFits(const recipients::Recipient& row) const {
    return message_.charset().IsUtf8() || message_.CanHoldSubject(row);
  }

  std::uint64_t SizeFor(const recipients::Recipient& row, const smtp::Address& address) const {
    message::RenderedMessage rendered;
    return message_.Render(row, address, 1, rendered) ? rendered.size() : 0;
  }

  const message::MessageTemplate& message_;
  PreFlight& found_;
  std::bitset<document::kMergeFields.size()> used_;
};

// Of the message itself.
PreFlight LookAt(const document::MessageDocument& document, const message::MessageTemplate& message,
                 const platform::CancelToken& cancel) {
  PreFlight found;
  found.unknown_tags =
      document::UnknownTags(document.subject + "\n" + document.html + "\n" + document.text.value_or(""));
  found.samples = document::SamplesLeft(document.text.value_or("") + document.html);
  for (const auto& trouble : message.picture_troubles()) {
    found.pictures.push_back(message::GoesWithout(trouble));
  }
  if (message.is_html()) {
    for (const auto& address : html::FindPicturesNamedByTags(document.html)) {
      found.pictures.push_back(
          Say("The picture {} is named by a merge tag, so it is not taken along: readers show it only where its "
              "address is one of the net.",
              platform::Printable(address, 200)));
    }
    found.links = document::LocalLinks(document.html, cancel);
  }
  found.lacks_text = message.is_html() && !message.has_text();
  found.charset = message.charset().MimeName();
  return found;
}

// Hears what the server offers.
class NoticeListener final : public smtp::JobSource {
 public:
  smtp::Job* NextJob() override { return nullptr; }
  void Finished(smtp::Job&, const smtp::Outcome&) override {}
  void Connected(const smtp::Capabilities& offered) override { offers_notices_ = offered.dsn; }
  void LogLine(std::string_view) override {}
  void Progress(std::uint64_t, std::uint64_t) override {}
  bool offers_notices() const { return offers_notices_; }

 private:
  bool offers_notices_ = false;
};

}  // namespace

Result<PreFlight> LookOver(recipients::RowSource& rows, const document::MessageDocument& document,
                           const message::MessageTemplate& message, const platform::CancelToken& cancel) {
  PreFlight found = LookAt(document, message, cancel);
  Look look(message, found);
  const auto walked = Walk(rows, {}, &cancel, [&](const recipients::Recipient& row, std::int64_t) {
    look.At(row);
    return true;
  });
  if (!walked) return walked.error();
  if (*walked == recipients::Walked::kCancelled) {
    return Error{Failure::kTryAgain, "Stopped before anything was sent.", ""};
  }
  std::erase_if(found.empty_fields, [](const auto& empty) { return empty.recipients == 0; });
  return found;
}

std::vector<Sentence> Describe(const PreFlight& findings) {
  std::vector<Sentence> lines = findings.pictures;
  lines.insert(lines.end(), findings.links.begin(), findings.links.end());
  if (findings.lacks_text) {
    lines.emplace_back("The message goes out without a plain-text part, which some readers and filters expect.");
  }
  lines.insert(lines.end(), findings.samples.begin(), findings.samples.end());
  for (const auto& tag : findings.unknown_tags) {
    lines.push_back(document::DescribeUnknownTag(tag));
  }
  if (findings.unknown_tags.size() == document::kMostUnknownTags) {
    lines.push_back(Say("There may be more unknown tags: no more than {} are looked for.", document::kMostUnknownTags));
  }
  for (const auto& empty : findings.empty_fields) {
    lines.push_back(SayOf(empty.recipients, "{} recipient has no value for {} (the first is {}).",
                          "{} recipients have no value for {} (the first is {}).",
                          document::kMergeFields[empty.field].tag, platform::Printable(empty.first, 100)));
  }
  if (findings.subjects_beyond_set > 0) {
    lines.push_back(
        SayOf(findings.subjects_beyond_set,
              "{} recipient has a subject that {} cannot hold, so it goes out in UTF-8 (the first is {}).",
              "{} recipients have a subject that {} cannot hold, so it goes out in UTF-8 (the first is {}).",
              findings.charset, platform::Printable(findings.first_beyond_set, 100)));
  }
  if (findings.markup_values > 0) {
    lines.push_back(
        SayOf(findings.markup_values,
              "{} recipient has \"<\" or \"&\" in a value, which goes into the HTML as it stands (the first is {}).",
              "{} recipients have \"<\" or \"&\" in a value, which goes into the HTML as it stands (the first is {}).",
              platform::Printable(findings.first_with_markup, 100)));
  }
  if (findings.without_address > 0) {
    lines.push_back(SayOf(findings.without_address, "{} entry has no address that a message can be sent to.",
                          "{} entries have no address that a message can be sent to."));
  }
  return lines;
}

std::optional<Sentence> AskAboutNotices(const account::AccountSettings& account,
                                        const message::MessageTemplate& message, const platform::Clock& clock,
                                        const platform::CancelToken& cancel) {
  if (!message.asks_for_notice()) return {};
  auto options = account::ConnectionOptionsOf(account);
  if (!options) return AsSentence(options.error());
  options->sign_in = false;
  options->timeout = std::min(options->timeout, kPatience);
  NoticeListener listener;
  const auto outcome = smtp::Client(*options, clock, cancel).Test(listener);
  if (listener.offers_notices()) return {};
  if (outcome.code == smtp::ResultCode::kSuccess) return kNoNotices;
  return Say("The server could not be asked whether it offers delivery notifications (DSN): {}",
             smtp::WhyText(outcome));
}

}  // namespace quillcast::run

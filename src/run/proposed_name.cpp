#include "run/proposed_name.h"

#include <fmt/format.h>

#include "mail_file/safe_part_name.h"
#include "platform/text.h"
#include "run/run_words.h"

namespace quillcast::run {
namespace {

constexpr std::size_t kLongestPart = 60;  // bytes, so that the day and the ending have their place
constexpr std::size_t kDay = 10;          // of "2026-11-27 09:05:07"

std::string PartOf(std::string_view text) {
  std::string part = platform::Printable(platform::Trim(text), kLongestPart);
  for (char& c : part) {
    if (c == '/' || c == '\\') c = '-';
  }
  return part;
}

}  // namespace

std::string ProposedName(const NamedMailing& mailing, std::string_view what, std::string_view ending,
                         const platform::Clock& clock) {
  return mail_file::SafePartName(fmt::format("{} to {} {}{}{}{}", PartOf(ReadableSubject(mailing.subject)),
                                             PartOf(mailing.group), MomentText(mailing.began, clock).substr(0, kDay),
                                             what.empty() ? "" : ", ", what, ending));
}

std::string ProposedName(const MailingEntry& mailing, std::string_view what, std::string_view ending,
                         const platform::Clock& clock) {
  return ProposedName({mailing.subject, mailing.group, mailing.runs.front().began}, what, ending, clock);
}

std::string_view WhatIsIn(const RecipientChoice& choice) {
  if (choice.states.count() != 1) return "recipients";
  for (std::size_t n = 0; n < kResultStates; ++n) {
    if (choice.states[n]) return Name(static_cast<ResultState>(n));
  }
  return "recipients";
}

}  // namespace quillcast::run

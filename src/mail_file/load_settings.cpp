#include "mail_file/load_settings.h"

#include <cstdint>
#include <utility>

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kMostTold = 3;

}  // namespace

Result<LoadMode> LoadModeOf(const profile::SettingsStore& settings) {
  const auto extended = settings.Read("Account", "Extended", "0");
  if (!extended) return extended.error();
  return *extended == "1" ? LoadMode::kExtended : LoadMode::kPlain;
}

std::string_view LoadWarning(const Loading& loading) { return TextOf(loading.code()); }

std::vector<Sentence> WhatWasWrong(const Loading& loading) {
  std::vector<Sentence> told;
  for (const LoadFault& fault : loading.faults) {
    if (told.size() == kMostTold) break;
    told.push_back(Say("{} {}", TextOf(fault.code), fault.what));
  }
  if (const auto more = static_cast<std::int64_t>(loading.faults.size() - told.size()); more > 0)
    told.push_back(Say("And {} more.", NumberValue(more)));
  if (Sentence why = loading.message ? WhyNoMessage(*loading.message) : Sentence(); !why.empty())
    told.push_back(std::move(why));
  return told;
}

Sentence WhyNoMessage(const MailMessage& message) {
  constexpr std::uint64_t kEmptyLine = 2;  // with its end
  const bool has_field = message.parts().empty() || message.parts().front().header.size() > kEmptyLine;
  return has_field ? Sentence() : "The file has no header fields, so it may be no message.";
}

Result<void> CheckIsNotMessage(const std::filesystem::path& target, const std::filesystem::path& message) {
  if (!std::filesystem::equivalent(target, message, IgnoreErrors())) return {};
  return Error{Failure::kNotPermitted, Say("{} is the message file itself, and was left as it is.", target.string()),
               "Name another file."};
}

}  // namespace quillcast::mail_file

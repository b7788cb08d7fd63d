// The last check of a sending domain that somebody asked for, kept for a day so that a run can be reminded of it.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "domain/sender/sender_check.h"
#include "domain/sender/sender_lookup.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "profile/settings_store.h"

namespace quillcast::domain {

inline constexpr std::chrono::hours kCheckCounts{24};

// One is kept, of the account's own domain, as runs send in the name of no other; one that found out nothing is not,
// and leaves the one before.
Result<void> KeepSenderCheck(profile::SettingsStore& settings, const std::string& domain,
                             std::chrono::system_clock::time_point now, const SenderReport& report);

// A check that was made and kept; that it could not be kept does not take it away.
struct KeptReport {
  SenderReport report;
  std::optional<Error> not_kept;
};
// Looks the domain up now, for kSenderCheckTime at most, and keeps what was found. Fails as LookUpSender does.
Result<KeptReport> CheckAndKeep(const SenderQuestion& question, const SenderLookup& lookup,
                                profile::SettingsStore& settings, const platform::Clock& clock,
                                const platform::CancelToken& cancel);

// What it found to mend in this domain: one sentence for whoever is about to send. Nothing where nothing was, where the
// domain is another or was never checked, and where the check is older than kCheckCounts or from the future.
Result<std::optional<Sentence>> RememberSenderCheck(const profile::SettingsStore& settings, const std::string& domain,
                                                    std::chrono::system_clock::time_point now);

}  // namespace quillcast::domain

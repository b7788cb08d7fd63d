#include "domain/sender/kept_check.h"

#include <algorithm>
#include <array>

#include "domain/sender/account_sender.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

constexpr const char* kSection = "SenderCheck";

std::int64_t Seconds(std::chrono::system_clock::time_point moment) {
  return std::chrono::duration_cast<std::chrono::seconds>(moment.time_since_epoch()).count();
}

}  // namespace

Result<void> KeepSenderCheck(profile::SettingsStore& settings, const std::string& domain,
                             std::chrono::system_clock::time_point now, const SenderReport& report) {
  if (report.IsBlank()) return {};
  const auto account = account::AccountSettings::Load(settings);
  if (!account) return account.error();
  const auto own = QuestionOf(*account);
  if (!own || own->domain != domain) return {};
  const auto count = std::count_if(report.findings.begin(), report.findings.end(), IsToMend);
  const auto worst = std::find_if(report.findings.begin(), report.findings.end(),
                                  [&](const Finding& finding) { return finding.verdict == Verdict::kBad; });
  const auto first =
      worst != report.findings.end() ? worst : std::find_if(report.findings.begin(), report.findings.end(), IsToMend);
  const std::string time = std::to_string(Seconds(now));
  const std::string number = std::to_string(count);
  const std::string what = first == report.findings.end() ? std::string() : first->what.InEnglish();
  const std::array values = {profile::SettingValue{"Domain", domain}, profile::SettingValue{"Time", time},
                             profile::SettingValue{"Count", number}, profile::SettingValue{"First", what}};
  return settings.WriteAll(kSection, values);
}

Result<KeptReport> CheckAndKeep(const SenderQuestion& question, const SenderLookup& lookup,
                                profile::SettingsStore& settings, const platform::Clock& clock,
                                const platform::CancelToken& cancel) {
  Result<SenderReport> report =
      LookUpSender(question, lookup,
                   {clock, cancel, platform::Stop::kStop, net::Deadline::After(clock.Monotonic(), kSenderCheckTime)});
  if (!report) return report.error();
  KeptReport kept{*std::move(report), std::nullopt};
  if (const auto done = KeepSenderCheck(settings, question.domain, clock.Now(), kept.report); !done) {
    kept.not_kept = done.error();
  }
  return kept;
}

Result<std::optional<Sentence>> RememberSenderCheck(const profile::SettingsStore& settings, const std::string& domain,
                                                    std::chrono::system_clock::time_point now) {
  const Result<std::string> kept = settings.Read(kSection, "Domain", "");
  if (!kept) return kept.error();
  const Result<std::string> time = settings.Read(kSection, "Time", "");
  if (!time) return time.error();
  const Result<std::string> count = settings.Read(kSection, "Count", "");
  if (!count) return count.error();
  const Result<std::string> first = settings.Read(kSection, "First", "");
  if (!first) return first.error();

  const std::optional<std::int64_t> then = platform::ParseWholeNumber(*time);
  const std::int64_t number = platform::ParseWholeNumber(*count).value_or(0);
  const std::int64_t age = Seconds(now) - then.value_or(0);
  const bool counts = then && *kept == domain && !domain.empty() && number > 0 && age >= 0 &&
                      age <= std::chrono::duration_cast<std::chrono::seconds>(kCheckCounts).count();
  if (!counts) return std::optional<Sentence>();
  return std::optional(SayOf(number, "{} thing to mend was found when {} was checked: {}",
                             "{} things to mend were found when {} was checked, the first: {}", domain,
                             platform::Printable(*first, 300)));
}

}  // namespace quillcast::domain

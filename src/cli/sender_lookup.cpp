#include "cli/sender_lookup.h"

#include <fmt/format.h>

#include "domain/sender/kept_check.h"
#include "domain/sender/sender_lookup.h"

namespace quillcast::cli {
Result<domain::SenderReport> CheckSenderNow(Context& context, const domain::SenderQuestion& question,
                                            std::vector<net::Endpoint> servers) {
  domain::SenderLookup lookup;
  lookup.servers = std::move(servers);
  Result<domain::SenderReport> report =
      domain::LookUpSender(question, lookup,
                           {.clock = context.clock,
                            .cancel = context.cancel,
                            .gives_up_at = platform::Stop::kStop,
                            .deadline = net::Deadline::After(context.clock.Monotonic(), domain::kSenderCheckTime)});
  if (!report) return report;
  profile::SettingsStore settings(context.Folders().settings);
  const Result<void> kept = domain::KeepSenderCheck(settings, question.domain, context.clock.Now(), *report);
  if (!kept) context.output.Note("The result could not be kept: " + InOneLine(kept.error()));
  return report;
}

void ShowFinding(const Context& context, const domain::Finding& finding) {
  context.output.Line(
      fmt::format("{}: {}: {}", domain::WordOf(finding.verdict), finding.topic(), finding.what.InEnglish()));
  if (!finding.remedy.empty()) context.output.Line("  " + finding.remedy.InEnglish());
  context.output.Object({{"topic", finding.topic()},
                         {"finding", finding.word()},
                         {"verdict", domain::WordOf(finding.verdict)},
                         {"what", finding.what.InEnglish()},
                         {"remedy", finding.remedy.InEnglish()}});
}

}  // namespace quillcast::cli

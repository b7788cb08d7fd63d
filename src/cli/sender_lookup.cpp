#include "cli/sender_lookup.h"

#include <fmt/format.h>

#include "domain/sender/kept_check.h"

namespace quillcast::cli {

Result<domain::SenderReport> CheckSenderNow(Context& context, const domain::SenderQuestion& question,
                                            std::vector<net::Endpoint> servers) {
  domain::SenderLookup lookup;
  lookup.servers = std::move(servers);
  profile::SettingsStore settings(context.Folders().settings);
  auto kept = domain::CheckAndKeep(question, lookup, settings, context.clock, context.cancel);
  if (!kept) return kept.error();
  if (kept->not_kept) context.output.Note("The result could not be kept: " + InOneLine(*kept->not_kept));
  return std::move(kept->report);
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

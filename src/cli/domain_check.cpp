// quillcast domain check: whether mail in the name of a domain will be believed.
#include <algorithm>
#include <memory>

#include "cli/domain_commands.h"
#include "cli/sender_lookup.h"
#include "domain/name_look_ups.h"
#include "domain/sender/account_sender.h"
#include "net/idna.h"

namespace quillcast::cli {
namespace {

struct CheckOptions {
  bool is_named = false;
  std::string domain;
  std::vector<std::string> selectors;
  std::string server;
  std::string dns;
};

// The domain that was named, or the account's.
Result<domain::SenderQuestion> QuestionOf(const Context& context, const CheckOptions& options) {
  const profile::SettingsStore settings(context.Folders().settings);
  const Result<account::AccountSettings> account = account::AccountSettings::Load(settings);
  if (!account) return account.error();
  Result<domain::SenderQuestion> question =
      options.is_named ? domain::QuestionOf(options.domain, *account) : domain::QuestionOf(*account);
  if (!question) return question;
  for (const std::string& typed : options.selectors) {
    const Result<std::string> selector = domain::SelectorIn(typed);
    if (!selector) return selector.error();
    question->selectors.push_back(*selector);
  }
  if (options.server.empty()) return question;
  auto hosts = domain::HostsIn(options.server);
  if (!hosts || hosts->empty()) {
    return Error{Failure::kUsage, Say("\"{}\" is not a server.", options.server), "Give its name or its address."};
  }
  question->servers = *std::move(hosts);
  return question;
}

int RunDomainCheck(Context& context, const CheckOptions& options) {
  const auto servers = domain::ChosenDnsServers(options.dns);
  if (!servers) return context.output.Fail(servers.error());
  const auto question = QuestionOf(context, options);
  if (!question) return context.output.Fail(question.error());
  const auto report = CheckSenderNow(context, *question, *servers);
  if (!report) return context.output.Fail(report.error());
  for (const domain::Finding& finding : report->findings) ShowFinding(context, finding);
  context.output.Note(report->Summary(question->domain).InEnglish());
  if (report->IsBlank()) return ExitCode(Failure::kUnavailable);
  return report->Gravest() == domain::Verdict::kBad ? 1 : 0;
}

}  // namespace

void AddDomainCheck(CLI::App& domain, Context& context) {
  const auto options = std::make_shared<CheckOptions>();
  CLI::App& command = *domain.add_subcommand("check", "Tell whether mail in the name of a domain will be believed");
  const CLI::Option* named =
      command.add_option("DOMAIN", options->domain, "The domain behind the \"@\"; without one, that of the account");
  command.add_option("--selector", options->selectors, "Where the key of the signature is published; may be repeated")
      ->type_name("NAME");
  command
      .add_option("--server", options->server, "The server that sends; without one, the account's for its own domain")
      ->type_name("HOST");
  command.add_option("--dns", options->dns, "Address of the name server to ask; else the computer's own are")
      ->type_name("ADDR[:PORT]");
  command.footer(
      "Looks at MX, SPF, DKIM, DMARC, MTA-STS and the names of the server's addresses.\n"
      "Example: quillcast domain check example.org --selector s1\n\n"
      "Exit codes: 0 nothing bad was found; 1 something is bad; 69 no question was answered.");
  OnRun(command, context, [options, named](Context& c) {
    options->is_named = named->count() > 0;
    return RunDomainCheck(c, *options);
  });
}

}  // namespace quillcast::cli

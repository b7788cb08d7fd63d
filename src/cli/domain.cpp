// quillcast domain whois|ip|name|mx|check: who holds a domain, what a name or an address leads to, and where its mail
// goes.
#include <memory>

#include "charset/charset.h"
#include "cli/commands.h"
#include "cli/domain_commands.h"
#include "domain/domain_name_rules.h"
#include "domain/mx_look_up.h"
#include "domain/name_look_ups.h"
#include "domain/whois.h"
#include "domain/whois_servers.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

// What was typed, before it is checked.
struct DomainArguments {
  std::string name;
  std::string dns;
  std::string whois;
  std::string charset;
  bool follow = false;
  std::int64_t timeout = 0;  // seconds
};

// A question is given up at the first interrupt: nothing that is under way would be lost.
net::Patience PatienceOf(const DomainArguments& typed, const Context& context) {
  return {context.clock, context.cancel, platform::Stop::kStop,
          net::Deadline::After(context.clock.Monotonic(), std::chrono::seconds(typed.timeout))};
}

void ShowWhois(const domain::WhoisAnswer& answer, const net::HostPort& server, const DomainArguments& typed,
               Context& context) {
  std::string shown = platform::ReplaceAll(answer.text, "\t", "    ");
  if (shown.ends_with('\n')) shown.pop_back();  // Line ends it
  context.output.Line(shown);
  if (!answer.cut_short) context.output.Note(domain::DescribeWhois(answer, server).InEnglish());
  nlohmann::ordered_json object = {{"name", typed.name},        {"server", net::ToString(server)},
                                   {"charset", answer.charset}, {"complete", !answer.cut_short},
                                   {"text", answer.text},       {"referral", nullptr}};
  if (answer.referral) object["referral"] = net::ToString(*answer.referral);
  context.output.Object(object);
}

Result<net::HostPort> WhoisServerOf(const DomainArguments& typed) {
  if (typed.whois.empty()) return domain::WhoisServerForName(typed.name);
  auto server = net::ParseHostPort(typed.whois, domain::kWhoisPort);
  if (server) return *std::move(server);
  return Error{Failure::kUsage, Say("\"{}\" is not a server.", typed.whois),
               "Give its name or address, with or without a port: whois.example or 192.0.2.1:43."};
}

// Asks the server, and the one that it names where that is wanted; never a third.
int RunWhois(Context& context, const DomainArguments& typed) {
  if (const auto complaint = domain::CheckWholeDomainName(typed.name))
    return context.output.Complain(complaint->message);
  auto server = WhoisServerOf(typed);
  if (!server) return context.output.Fail(server.error());
  for (bool last = !typed.follow;; last = true) {
    const auto answer = domain::AskWhois(*server, typed.name, PatienceOf(typed, context), typed.charset);
    if (!answer) return context.output.Fail(answer.error());
    ShowWhois(*answer, *server, typed, context);
    if (answer->cut_short) return context.output.Fail(*answer->cut_short);
    if (!answer->referral) return 0;
    if (last) {
      if (!typed.follow) {
        context.output.Note(net::ToString(*answer->referral) + " knows more, it says; --follow asks there too.");
      }
      return 0;
    }
    server = *answer->referral;
  }
}

using LookUp = Result<domain::FoundLines> (*)(std::string_view, const std::vector<net::Endpoint>&,
                                              const net::Patience&);

int RunConversion(Context& context, const DomainArguments& typed, const char* found_key, LookUp look_up) {
  const auto servers = domain::ChosenDnsServers(typed.dns);
  if (!servers) return context.output.Fail(servers.error());
  const auto found = look_up(typed.name, *servers, PatienceOf(typed, context));
  if (!found) return context.output.Fail(found.error());
  for (const std::string& line : found->lines) context.output.Line(line);
  context.output.Note(found->status.InEnglish());
  context.output.Object({{"asked", typed.name}, {found_key, found->lines}});
  return 0;
}

int RunIp(Context& context, const DomainArguments& typed) {
  const std::string complaint = domain::CheckNameToConvert(typed.name);
  if (!complaint.empty()) return context.output.Complain(complaint);
  return RunConversion(context, typed, "addresses", domain::AddressesOf);
}

int RunName(Context& context, const DomainArguments& typed) {
  const std::string complaint = domain::CheckAddressToConvert(typed.name);
  if (!complaint.empty()) return context.output.Complain(complaint);
  return RunConversion(context, typed, "names", domain::NamesOf);
}

nlohmann::ordered_json MxObject(const domain::MxReport& report, const std::string& name) {
  auto hosts = nlohmann::ordered_json::array();
  for (const auto& one : report.hosts) hosts.push_back({{"preference", one.preference}, {"host", one.host}});
  return {{"domain", name},
          {"code", report.code},
          {"word", std::string(domain::MxWord(report.code))},
          {"hosts", hosts},
          {"takes_no_mail", report.takes_no_mail},
          {"fallback", report.fallback},
          {"status", report.status.InEnglish()}};
}

int RunMx(Context& context, const DomainArguments& typed) {
  if (const auto complaint = domain::CheckWholeDomainName(typed.name))
    return context.output.Complain(complaint->message);
  const auto report = domain::LookUpMx(typed.dns, typed.name, PatienceOf(typed, context));
  if (!report) return context.output.Fail(report.error());
  context.output.Object(MxObject(*report, typed.name));
  for (const auto& one : report->hosts) context.output.Columns({std::to_string(one.preference), one.host});
  if (report->failure) {
    context.output.Line(domain::MxWord(report->code));
    return context.output.Fail(*report->failure);
  }
  context.output.Note(report->status.InEnglish());
  return 0;
}

using Run = int (*)(Context&, const DomainArguments&);

CLI::App* AddQuestion(CLI::App& parent, Context& context, const char* name, const char* what,
                      const std::shared_ptr<DomainArguments>& typed, std::chrono::seconds timeout, Run run) {
  auto* command = parent.add_subcommand(name, what);
  typed->timeout = timeout.count();
  command->add_option("--timeout", typed->timeout, "Give up after so long")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(CLI::Range(1, 600));
  OnRun(*command, context, [typed, run](Context& running) { return run(running, *typed); });
  return command;
}

CLI::App* AddDnsQuestion(CLI::App& parent, Context& context, const char* name, const char* what, const char* argument,
                         const char* about, Run run) {
  const auto typed = std::make_shared<DomainArguments>();
  auto* command = AddQuestion(parent, context, name, what, typed, domain::kLookUpTime, run);
  command->add_option(argument, typed->name, about)->required();
  command->add_option("--dns", typed->dns, "Address of the name server to ask; else the computer's own are")
      ->type_name("ADDR[:PORT]");
  return command;
}

void AddWhois(CLI::App& parent, Context& context) {
  const auto typed = std::make_shared<DomainArguments>();
  auto* command = AddQuestion(parent, context, "whois", "Who holds a domain, as its registry tells it", typed,
                              domain::kWhoisTime, RunWhois);
  command->add_option("NAME", typed->name, "The domain with its extension, in any script")->required();
  command->add_option("--whois", typed->whois, "The whois server to ask; else that of the extension's registry is")
      ->type_name("HOST[:PORT]");
  command->add_flag("--follow", typed->follow, "Ask the server too that the answer names, once");
  command->add_option("--charset", typed->charset, "Read the answer in this character set")
      ->type_name("NAME")
      ->check([](const std::string& name) {
        return charset::FindCharset(name) ? std::string() : "\"" + name + "\" is no character set that is known here";
      });
  command->footer("Example:\n  quillcast domain whois example.com --follow");
}

}  // namespace

void AddDomainCommand(CLI::App& app, Context& context) {
  auto* parent = app.add_subcommand(
      "domain", "Look up who holds a domain, its addresses and its mail hosts, and check it as a sender");
  parent->require_subcommand(1);
  parent->footer("Example: quillcast domain mx example.com");
  AddWhois(*parent, context);
  AddDnsQuestion(*parent, context, "ip", "The addresses of a name", "NAME", "The name of a host, in any script", RunIp)
      ->footer("Example:\n  quillcast domain ip mail.example.com");
  AddDnsQuestion(*parent, context, "name", "The names of an address", "ADDRESS", "An IPv4 or IPv6 address", RunName)
      ->footer("Example:\n  quillcast domain name 192.0.2.1");
  AddDnsQuestion(*parent, context, "mx", "The hosts that take a domain's mail, the most preferred first", "DOMAIN",
                 "The domain with its extension", RunMx)
      ->footer("Example:\n  quillcast domain mx example.com --dns 192.0.2.53");
  AddDomainCheck(*parent, context);
}

}  // namespace quillcast::cli

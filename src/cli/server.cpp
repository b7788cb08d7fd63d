// quillcast server test: tries a mail server, without a message and without a password.
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cstring>

#include "account/account_settings.h"
#include "account/component_values.h"
#include "cli/commands.h"
#include "domain/connection/connection_facts.h"
#include "domain/connection/connection_input.h"
#include "domain/connection/connection_meaning.h"
#include "domain/connection/connection_test.h"
#include "domain/connection/connection_verdict.h"
#include "net/address.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using nlohmann::ordered_json;

constexpr int kLongestPatience = 600;  // seconds

struct TestRequest {
  std::string server;
  std::string security = "Automatic";
  int patience = 30;
};

ordered_json TimeOf(std::chrono::system_clock::time_point moment) {
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::chrono::system_clock::to_time_t(moment)));
}

ordered_json StepsOf(const domain::ConnectionTest& test) {
  auto steps = ordered_json::array();
  for (const auto& step : test.steps) {
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(step.took).count();
    steps.push_back({{"step", domain::WordOf(step.step)},
                     {"ms", static_cast<double>(microseconds) / 1000},
                     {"done", !test.EndedAt(step)}});
  }
  return steps;
}

ordered_json AddressesOf(const domain::ConnectionTest& test) {
  auto addresses = ordered_json::array();
  for (const auto& address : test.addresses) {
    ordered_json one = {{"address", net::ToString(address.peer)}, {"connected", address.connected}};
    if (address.error != 0) one["error"] = std::strerror(address.error);
    addresses.push_back(std::move(one));
  }
  return addresses;
}

ordered_json TlsOf(const domain::ConnectionTest& test) {
  if (!test.tls) return nullptr;
  ordered_json tls = {{"version", test.tls->version}, {"cipher", test.tls->cipher}, {"certificate", nullptr}};
  if (const auto& certificate = test.tls->certificate) {
    tls["certificate"] = {{"names", certificate->names},
                          {"subject", certificate->subject},
                          {"issuer", certificate->issuer},
                          {"from", TimeOf(certificate->valid_from)},
                          {"to", TimeOf(certificate->valid_to)},
                          {"trusted", certificate->fault == net::CertificateFault::kNone},
                          {"why", certificate->why}};
  }
  return tls;
}

ordered_json OfferOf(const std::optional<domain::Offer>& offer) {
  if (!offer) return nullptr;
  return {{"sign_in", offer->sign_in}, {"extensions", offer->extensions}};
}

ordered_json OthersOf(const domain::ConnectionTest& test) {
  auto others = ordered_json::array();
  for (const auto& other : test.others) {
    others.push_back({{"server", other.server.host},
                      {"port", other.server.port},
                      {"code", static_cast<int>(other.outcome.code)},
                      {"verdict", domain::WordOf(domain::VerdictOf(other))},
                      {"report", other.report}});
  }
  return others;
}

ordered_json ResultOf(const domain::ConnectionTest& test, int threading) {
  ordered_json result = {{"server", test.server.host},
                         {"port", test.server.port},
                         {"code", static_cast<int>(test.outcome.code)},
                         {"verdict", domain::WordOf(domain::VerdictOf(test))},
                         {"meaning", ordered_json::array()},
                         {"reply_code", test.outcome.reply.code},
                         {"reply", test.outcome.reply.text},
                         {"reason", test.outcome.reason},
                         {"steps", StepsOf(test)},
                         {"addresses", AddressesOf(test)},
                         {"tls", TlsOf(test)},
                         {"in_clear", OfferOf(test.in_clear)},
                         {"under_tls", OfferOf(test.under_tls)},
                         {"report", test.report},
                         {"threading", threading}};
  for (const auto& sentence : domain::MeaningOf(test)) result["meaning"].push_back(sentence.InEnglish());
  result["others"] = OthersOf(test);
  result["untried"] = ordered_json::array();
  for (const auto& server : test.untried) result["untried"].push_back(domain::TextOf(server));
  return result;
}

void TellTest(const Output& output, const domain::ConnectionTest& test) {
  output.Line(test.report);
  for (const auto& fact : domain::FactsOf(test)) {
    output.Line(fmt::format("{}: {}", fact.what.InEnglish(), fact.value.InEnglish()));
  }
  output.Line("");
  for (const auto& sentence : domain::MeaningOf(test)) output.Line(sentence.InEnglish());
}

int RunTest(Context& context, const TestRequest& request) {
  constexpr const char* kPort = "25";  // where none is named, as for the account
  if (const auto complaint = domain::CheckTest(request.server, kPort)) {
    return context.output.Complain(complaint->message.empty() ? complaint->reason.InEnglish() : complaint->message);
  }
  const auto options =
      domain::TestOptions(request.server, kPort, request.security, std::chrono::seconds(request.patience));
  if (!options) return context.output.Fail(options.error());
  const profile::SettingsStore settings(context.Folders().settings);
  const auto threads = account::ThreadModes::Load(settings);
  if (!threads) return context.output.Fail(threads.error());
  const auto given = account::ComponentValuesOf({}, (*threads)[account::ThreadProtocol::kSmtp]);
  const auto test = domain::TestConnection(*options, context.clock, context.cancel);
  TellTest(context.output, test);
  context.output.Object(ResultOf(test, given.threading));
  if (test.TakesMail()) return 0;
  return ExitCode(test.outcome.code == smtp::ResultCode::kCancelled ? Failure::kTryAgain : Failure::kUnavailable);
}

}  // namespace

void AddServerCommand(CLI::App& app, Context& context) {
  auto* server = app.add_subcommand("server", "Mail servers: try one");
  server->require_subcommand(1);
  auto* test = server->add_subcommand(
      "test", "Connect to a mail server and leave, and say what that means for the account; no message, no password");
  const auto request = std::make_shared<TestRequest>();
  test->add_option("server", request->server, "Its name or address, with its port behind a colon; 25 without one")
      ->required()
      ->type_name("HOST[:PORT]");
  const auto choices = account::RowOf(account::AccountKey::kSecurity).choices;
  test->add_option("--security", request->security, "As in the account: Automatic, STARTTLS, TLS or None")
      ->type_name("KIND")
      ->transform(CLI::IsMember(std::vector<std::string>(choices.begin(), choices.end()), CLI::ignore_case));
  test->add_option("--timeout", request->patience,
                   "Seconds for each step; twice as many for the whole, and 10 more where servers say nothing")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, kLongestPatience))
      ->capture_default_str();
  test->footer(
      "Exit code 0 when the server takes the connection, 69 when not.\n"
      "Example:\n  quillcast server test mail.example.org:587\n"
      "  quillcast server test mail.example.org:465 --security TLS --json");
  OnRun(*test, context, [request](Context& c) { return RunTest(c, *request); });
}

}  // namespace quillcast::cli

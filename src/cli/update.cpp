// quillcast update check|proxy: which version is the latest, and how the web is reached for that.
#include <memory>

#include "cli/commands.h"
#include "net/address.h"
#include "update/update_check.h"

namespace quillcast::cli {
namespace {

using update::UpdateSettings;

struct ProxyRequest {
  std::string proxy;
  std::string timeout;
  bool off = false;
};

int RunUpdateCheck(Context& context) {
  const auto settings = UpdateSettings::Load(profile::SettingsStore(context.Folders().settings));
  if (!settings) return context.output.Fail(settings.error());
  if (const auto complaint = update::CheckSettings(*settings)) return context.output.Complain(complaint->message);
  const auto question = update::QuestionOf(*settings, context.environment);
  const net::Patience patience{context.clock, context.cancel, platform::Stop::kStop,
                               net::Deadline::After(context.clock.Monotonic(), question.patience)};
  const auto own = update::OwnVersion();
  const auto answer = update::AskForLatest(question, own, patience);
  if (!answer) return context.output.Fail(answer.error());
  context.output.Line(update::Describe(*answer, own).InEnglish());
  if (answer->standing == update::Standing::kNewer) {
    context.output.Line(std::string("Look at ") + update::kHomePage);
  }
  context.output.Object({{"version", update::TextOf(own)},
                         {"latest", update::TextOf(answer->latest)},
                         {"standing", update::Name(answer->standing)},
                         {"notes", answer->notes}});
  return 0;
}

void Show(const Output& output, const UpdateSettings& settings) {
  output.Line(settings.uses_proxy ? "Proxy: " + update::ProxyOf(settings) : "Proxy: none");
  output.Line("Timeout: " + settings.timeout + " min");
  output.Object({{"proxy", settings.uses_proxy},
                 {"address", settings.address},
                 {"port", settings.port},
                 {"timeout", settings.timeout}});
}

// Nothing where what was typed is no "HOST:PORT".
std::optional<net::HostPort> ProxyIn(const std::string& text) {
  constexpr std::uint16_t kNone = 0;
  auto proxy = net::ParseHostPort(text, kNone);
  return proxy && proxy->port != kNone ? proxy : std::nullopt;
}

int RunProxy(Context& context, const ProxyRequest& request) {
  profile::SettingsStore store(context.Folders().settings);
  auto settings = UpdateSettings::Load(store);
  if (!settings) return context.output.Fail(settings.error());
  if (!request.proxy.empty()) {
    const auto proxy = ProxyIn(request.proxy);
    if (!proxy) return context.output.Complain("Name the proxy with its port: proxy.example.org:3128.");
    settings->uses_proxy = true;
    settings->address = proxy->host;
    settings->port = std::to_string(proxy->port);
  }
  if (request.off) settings->uses_proxy = false;
  if (!request.timeout.empty()) settings->timeout = request.timeout;
  if (const auto complaint = update::CheckSettings(*settings)) return context.output.Complain(complaint->message);
  if (!request.proxy.empty() || request.off || !request.timeout.empty()) {
    const auto saved = settings->Save(store);
    if (!saved) return context.output.Fail(saved.error());
  }
  Show(context.output, *settings);
  return 0;
}

}  // namespace

void AddUpdateCommand(CLI::App& app, Context& context) {
  auto* command = app.add_subcommand("update", "Ask which version of Quillcast is the latest");
  command->require_subcommand(1);
  auto* check = command->add_subcommand("check", "Ask the maker's server; nothing is downloaded or installed");
  check->footer(
      "Exit code 0 when there was an answer, whichever; with --json \"standing\" is newer, same or older.\n"
      "Example:\n  quillcast update check");
  OnRun(*check, context, RunUpdateCheck);
  auto* proxy = command->add_subcommand("proxy", "Show or set how the web is reached for that");
  const auto request = std::make_shared<ProxyRequest>();
  auto* named = proxy->add_option("PROXY", request->proxy, "The proxy to ask through, with its port");
  named->type_name("HOST:PORT")->check([](const std::string& given) {
    return given.empty() ? "names nothing; --off asks without a proxy" : std::string();
  });
  proxy->add_flag("--off", request->off, "Ask without a proxy; which one it was is kept")->excludes(named);
  proxy->add_option("--timeout", request->timeout, "Give up after so many minutes, 1 to 10")->type_name("MINUTES");
  proxy->footer(
      "Example:\n  quillcast update proxy proxy.example.org:3128 --timeout 2\n  quillcast update proxy --off");
  OnRun(*proxy, context, [request](Context& c) { return RunProxy(c, *request); });
}

}  // namespace quillcast::cli

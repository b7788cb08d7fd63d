// quillcast mailbox: the built-in mail server.
#include <fmt/format.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <vector>

#include "cli/commands.h"
#include "cli/secret_input.h"
#include "net/listener.h"
#include "platform/text.h"
#include "smtp/mailbox/mailbox_server.h"

namespace quillcast::cli {
namespace {

constexpr const char* kExamples = R"(Examples:
  quillcast mailbox
      keeps what it is handed in the folder "Mailbox", at 127.0.0.1:2525
  quillcast mailbox --listen 127.0.0.1:0 --store /tmp/box --count 3
      takes a free port, says which, and ends after three messages
  quillcast mailbox --discard --refuse 'bob@*=550' --defer '*@slow.example=451'
      shows how a run takes refusals; MAIL:PATTERN asks the sender, DATA:PATTERN waits for the end of the message)";

// What was typed, before it is checked.
struct Arguments {
  std::string listen = "127.0.0.1:2525";
  std::string store;
  bool discard = false;
  std::string user;
  std::string password_file;
  std::string certificate;
  std::string key;
  bool auth_in_clear = false;
  std::string offer;
  std::vector<std::string> refuse;
  std::vector<std::string> defer;
  std::uint64_t size_limit = 64ULL * 1024 * 1024;
  std::size_t connection_limit = 100;
  std::int64_t timeout = 300;
  std::uint64_t count = 0;
};

Result<void> AddRules(const std::vector<std::string>& texts, smtp::RuleKind kind,
                      std::vector<smtp::ServerRule>& rules) {
  for (const auto& text : texts) {
    auto rule = smtp::ParseServerRule(text, kind);
    if (!rule) return rule.error();
    rules.push_back(*std::move(rule));
  }
  return {};
}

Result<smtp::ServerOptions> SessionOptions(const Arguments& arguments) {
  smtp::ServerOptions session;
  session.size_limit = arguments.size_limit;
  if (!arguments.offer.empty()) {
    const auto offer = smtp::ParseFeatures(arguments.offer);
    if (!offer) return offer.error();
    session.offer = *offer;
  }
  if (const auto added = AddRules(arguments.refuse, smtp::RuleKind::kRefuse, session.rules); !added) {
    return added.error();
  }
  if (const auto added = AddRules(arguments.defer, smtp::RuleKind::kDefer, session.rules); !added) return added.error();
  if (!arguments.user.empty()) {
    auto password = SecretFromFile(arguments.password_file);
    if (!password) return password.error();
    session.user = arguments.user;
    session.password = *std::move(password);
  }
  return session;
}

Result<smtp::MailboxOptions> OptionsOf(const Arguments& arguments, const Context& context) {
  auto session = SessionOptions(arguments);
  if (!session) return session.error();
  smtp::MailboxOptions options;
  options.listen = arguments.listen;
  options.session = *std::move(session);
  options.certificate = arguments.certificate;
  options.key = arguments.key;
  options.sign_in_in_clear = arguments.auth_in_clear;
  options.connection_limit = arguments.connection_limit;
  options.timeout = std::chrono::seconds(arguments.timeout);
  options.count = arguments.count;
  if (!arguments.discard) {
    options.store =
        arguments.store.empty() ? context.Folders().data / "Mailbox" : std::filesystem::path(arguments.store);
  }
  return options;
}

void Announce(const Context& context, const std::string& address, const smtp::MailboxOptions& options) {
  context.output.Line("Listening on " + address);
  context.output.Object({{"listening", address}});
  std::fflush(stdout);  // a script waits for this line
  if (!net::IsLoopbackAddress(address) && options.session.user.empty()) {
    context.output.Note("Anyone who can reach " + address +
                        " can leave messages in this mailbox. Use --auth to keep "
                        "strangers out, or listen on 127.0.0.1.");
  }
  if (options.store)
    context.output.Note("Messages are kept in " + options.store->string() + ". Ctrl+C ends the mailbox.");
}

int RunMailbox(const Arguments& arguments, Context& context) {
  const auto options = OptionsOf(arguments, context);
  if (!options) return context.output.Fail(options.error());
  auto server = smtp::MailboxServer::Listen(*options, context.clock);
  if (!server) return context.output.Fail(server.error());
  Announce(context, server->address(), *options);

  const auto kept = server->Run(context.cancel);
  if (!kept) return context.output.Fail(kept.error());
  const auto count = static_cast<std::int64_t>(*kept);
  context.output.Line(platform::Counted(count, "message", "messages") + (arguments.discard ? " taken." : " kept."));
  context.output.Object({{"kept", *kept}});
  return 0;
}

}  // namespace

void AddMailboxCommand(CLI::App& app, Context& context) {
  auto* command = app.add_subcommand("mailbox", "Take messages as a mail server would, for practice and tests");
  command->footer(kExamples);
  const auto arguments = std::make_shared<Arguments>();
  Arguments& typed = *arguments;

  command->add_option("--listen", typed.listen, "IP address and port to listen on; port 0 takes a free one")
      ->type_name("ADDR:PORT")
      ->capture_default_str();
  auto* store = command->add_option("--store", typed.store, "Folder to keep the messages in")->type_name("DIR");
  command->add_flag("--discard", typed.discard, "Throw the messages away")->excludes(store);
  auto* user = command->add_option("--auth", typed.user, "Ask clients to sign in as this user")->type_name("USER");
  auto* password = command->add_option("--password-file", typed.password_file, "File whose first line is the password")
                       ->type_name("FILE");
  user->needs(password);
  password->needs(user);
  auto* certificate = command->add_option("--tls-cert", typed.certificate, "Offer STARTTLS with this certificate (PEM)")
                          ->type_name("FILE");
  auto* key =
      command->add_option("--tls-key", typed.key, "The private key of that certificate (PEM)")->type_name("FILE");
  certificate->needs(key);
  key->needs(certificate);
  command->add_flag("--auth-in-clear", typed.auth_in_clear, "Let other computers sign in without a certificate too")
      ->needs(user);
  command->add_option("--offer", typed.offer, "Extensions to offer, separated by commas, or \"none\"")
      ->type_name("LIST");
  command->add_option("--refuse", typed.refuse, "Refuse recipients that match, with a code from 500 to 599")
      ->type_name("PATTERN=CODE")
      ->allow_extra_args(false);
  command->add_option("--defer", typed.defer, "Defer recipients that match, with a code from 400 to 499")
      ->type_name("PATTERN=CODE")
      ->allow_extra_args(false);
  command->add_option("--limit-size", typed.size_limit, "Largest message that is taken")
      ->type_name("BYTES")
      ->capture_default_str()
      ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 50));
  command->add_option("--limit-connections", typed.connection_limit, "Most clients at a time")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(1, 1000000));
  command
      ->add_option("--timeout", typed.timeout,
                   "Close a client that takes longer for a command, or for 64 KiB of a message")
      ->type_name("SECONDS")
      ->capture_default_str()
      ->check(CLI::Range(1, 86400));
  command->add_option("--count", typed.count, "End after so many messages")->type_name("N");
  OnRun(*command, context, [arguments](Context& running) { return RunMailbox(*arguments, running); });
}

}  // namespace quillcast::cli

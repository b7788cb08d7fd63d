// quillcast demo: a whole mailing of 25 letters, by the same commands that a person would give.
#include <fmt/format.h>
#include <sys/stat.h>

#include <cstdio>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "platform/file.h"
#include "platform/text.h"
#include "smtp/mailbox/running_mailbox.h"

namespace quillcast::cli {
namespace {

namespace fs = std::filesystem;

struct DemoOptions {
  std::string folder;
};

Result<fs::path> DemoFolder(const DemoOptions& options) {
  if (!options.folder.empty()) {
    std::error_code failed;
    if (fs::exists(options.folder, failed) && !fs::is_empty(options.folder, failed)) {
      return Error{Failure::kUsage, Say("{} is not empty.", options.folder),
                   "Name a folder that does not exist yet; the demonstration fills it."};
    }
    auto made = platform::EnsureFolder(options.folder);
    if (!made) return made.error();
    auto folder = fs::absolute(options.folder, failed);
    return failed ? fs::path(options.folder) : folder;
  }
  std::string name = (fs::temp_directory_path() / "quillcast-demo-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) return platform::SystemError("create", name, errno);
  return fs::path(name);
}

// As a shell would need it.
std::string Quoted(const std::string& argument) {
  if (argument.find_first_of(" $*'\"&<>;") == std::string::npos) return argument;
  return "'" + platform::ReplaceAll(argument, "'", "'\\''") + "'";
}

// Shows the command, then runs it as if it had been typed.
int Type(Context& context, const fs::path& profile, const std::vector<std::string>& arguments) {
  std::string line = "$ quillcast";
  for (const auto& argument : arguments) line += " " + Quoted(argument);
  context.output.Line("\n" + line);
  std::fflush(stdout);
  std::vector<std::string> all = {"--profile", profile.string(), "--yes"};
  if (context.output.json) all.emplace_back("--json");
  if (context.output.quiet) all.emplace_back("--quiet");
  all.insert(all.end(), arguments.begin(), arguments.end());
  return RunCommandLine(std::move(all), context.executable, context.cancel);
}

std::vector<std::vector<std::string>> Commands(const fs::path& demo, const std::string& port) {
  return {
      {"account", "set", "Name=Ada of the Paper Room", "Email=ada@paper-room.example", "Server=127.0.0.1",
       "Port=" + port},
      {"account", "test"},
      {"group", "new", "Customers"},
      {"import", (demo / "people.csv").string(), "--group", "Customers", "--delimiter", "Comma", "--map",
       "Email Address=3,First Name=1,Last Name=2,Company=4,City=5", "--opt-in"},
      {"send", "--group", "Customers", "--subject", "Spring papers for $*MergeFirstName*$", "--body",
       (demo / "letter.html").string(), "--attach", (demo / "price-list.pdf").string()},
      {"history", "list"},
  };
}

int RunDemo(Context& context, const DemoOptions& options) {
  const fs::path demo = context.Folders().program / "demo";
  if (!fs::exists(demo / "people.csv", IgnoreErrors())) {
    return context.output.Fail({Failure::kNoInput, Say("The demonstration's files are not in {}.", demo.string()),
                                "Build or install the program whole."});
  }
  const auto folder = DemoFolder(options);
  if (!folder) return context.output.Fail(folder.error());
  smtp::MailboxOptions mailbox_options;
  mailbox_options.store = *folder / "Mailbox";
  const auto mailbox = smtp::RunningMailbox::Start(mailbox_options, context.clock);
  if (!mailbox) return context.output.Fail(mailbox.error());

  context.output.Line("A mailing of 25 letters to the built-in mailbox. Nothing leaves this machine.");
  for (const auto& command : Commands(demo, (*mailbox)->port())) {
    if (const int failed = Type(context, *folder / "profile", command)) return failed;
  }
  context.output.Line(
      fmt::format("\nThe letters are in {0}; look at one:\n  less {0}/000001.eml", mailbox_options.store->string()));
  context.output.Object({{"mailbox", mailbox_options.store->string()}, {"profile", (*folder / "profile").string()}});
  return 0;
}

}  // namespace

void AddDemoCommand(CLI::App& app, Context& context) {
  auto* demo = app.add_subcommand("demo", "Watch a whole mailing happen, to a mailbox on this machine");
  auto options = std::make_shared<DemoOptions>();
  demo->add_option("--folder", options->folder, "Put its files into this new folder, not into one in /tmp")
      ->type_name("DIR");
  demo->footer("Example:\n  quillcast demo");
  OnRun(*demo, context, [options](Context& c) { return RunDemo(c, *options); });
}

}  // namespace quillcast::cli

#include "cli/man_page.h"

#include <fmt/format.h>

#include "platform/file.h"
#include "platform/text.h"
#include "profile/version.h"

namespace quillcast::cli {
namespace {

// man(7): a backslash begins an escape, a "-" may become a hyphen, and a "." or "'" at the beginning of a line a
// request.
std::string Roff(std::string_view text) {
  std::string out;
  for (const std::string_view line : platform::Split(text, '\n')) {
    if (!out.empty()) out += '\n';
    if (line.starts_with('.') || line.starts_with('\'')) out += "\\&";
    out += platform::ReplaceAll(platform::ReplaceAll(line, "\\", "\\e"), "-", "\\-");
  }
  return out;
}

std::string Bold(std::string_view text) { return "\\fB" + Roff(text) + "\\fR"; }
std::string Slanted(std::string_view text) { return "\\fI" + Roff(text) + "\\fR"; }

std::vector<const CLI::App*> Below(const CLI::App& command) {
  return command.get_subcommands([](const CLI::App*) { return true; });
}

// What a value is: "DIR", or "KIND:{None,TLS}" where it is one of several. A flag has none.
std::string ValueOf(const CLI::Option& option) {
  if (option.get_expected_max() == 0) return {};
  const std::string type = option.get_type_name();
  return type.empty() ? "VALUE" : type;
}

// "-o, --output FILE", or "FILE..." of what has no dashes.
std::string Heading(const CLI::Option& option) {
  if (!option.nonpositional()) return Slanted(option.get_name(true));
  std::string names;
  for (const std::string& name : option.get_snames()) names += (names.empty() ? "" : ", ") + Bold('-' + name);
  for (const std::string& name : option.get_lnames()) names += (names.empty() ? "" : ", ") + Bold("--" + name);
  const std::string value = ValueOf(option);
  return value.empty() ? names : names + ' ' + Slanted(value);
}

std::string Options(const CLI::App& command) {
  std::string out;
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_group().empty() || option->check_name("--help")) continue;
    out += fmt::format(".TP\n{}\n{}", Heading(*option), Roff(option->get_description()));
    if (!option->get_default_str().empty()) out += fmt::format(" ({} without it)", Roff(option->get_default_str()));
    out += '\n';
  }
  return out;
}

std::string Footer(const CLI::App& command) {
  const std::string footer = command.get_footer();
  return footer.empty() ? "" : fmt::format(".PP\n.nf\n{}\n.fi\n", Roff(footer));
}

std::string Synopsis(const CLI::App& command) {
  std::string line = Bold(FullName(command));
  bool has_options = false;
  for (const CLI::Option* option : command.get_options()) {
    has_options = has_options || (option->nonpositional() && !option->check_name("--help"));
    if (!option->nonpositional()) {
      line +=
          option->get_required() ? ' ' + Slanted(option->get_name(true)) : " [" + Slanted(option->get_name(true)) + ']';
    }
  }
  if (!Below(command).empty()) line += ' ' + Slanted("COMMAND") + " ...";
  return line + (has_options ? " [" + Slanted("OPTIONS") + "]" : "");
}

// Those below a command, each under its whole name, and those below them.
std::string Commands(const CLI::App& command) {
  std::string out;
  for (const CLI::App* below : Below(command)) {
    out += fmt::format(".SS {}\n{}\n.PP\n{}\n{}{}", Roff(FullName(*below)), Synopsis(*below),
                       Roff(below->get_description()), Options(*below), Footer(*below));
    out += Commands(*below);
  }
  return out;
}

}  // namespace

std::string FullName(const CLI::App& command) {
  const CLI::App* above = command.get_parent();
  return above == nullptr ? command.get_name() : FullName(*above) + ' ' + command.get_name();
}

std::string ManPage(const CLI::App& command) {
  const std::string name = platform::ReplaceAll(FullName(command), " ", "-");
  std::string page = fmt::format(".TH {} 1 \"\" \"Quillcast Classic {}.{}\"\n", platform::AsciiUpper(Roff(name)),
                                 profile::kVersionMajor, profile::kVersionMinor);
  page += fmt::format(".SH NAME\n{} \\- {}\n", Roff(name), Roff(command.get_description()));
  page += fmt::format(".SH SYNOPSIS\n{}\n.SH DESCRIPTION\n{}.\n", Synopsis(command), Roff(command.get_description()));
  const std::string options = Options(command);
  if (!options.empty()) page += ".SH OPTIONS\n" + options;
  const std::string below = Commands(command);
  if (!below.empty()) page += ".SH COMMANDS\n" + below;
  const std::string footer = Footer(command);
  if (!footer.empty()) page += ".SH EXAMPLES\n" + footer;
  return page +
         ".SH SEE ALSO\n.BR quillcast (1),\nwhich has the options that every command takes, and the exit codes.\n";
}

Result<void> WriteManPages(const CLI::App& app, const std::filesystem::path& folder) {
  auto made = platform::EnsureFolder(folder);
  for (const CLI::App* command : Below(app)) {
    if (!made) return made;
    made = platform::ReplaceFile(folder / fmt::format("quillcast-{}.1", command->get_name()), ManPage(*command));
  }
  return made;
}

}  // namespace quillcast::cli

// quillcast about: the version, the system, and what the program stands on.
#include "cli/commands.h"
#include "help/about_program.h"

namespace quillcast::cli {
namespace {

nlohmann::ordered_json AsObject(const std::vector<help::Fact>& facts, const std::vector<help::Library>& libraries) {
  nlohmann::ordered_json object = {{"licence", help::kLicence}, {"facts", {}}, {"libraries", {}}};
  for (const auto& fact : facts) object["facts"][fact.what.InEnglish()] = fact.value;
  for (const auto& library : libraries) {
    object["libraries"].push_back({{"name", library.name},
                                   {"version", library.version},
                                   {"licence", library.licence},
                                   {"package", library.package}});
  }
  return object;
}

int RunAbout(Context& context) {
  const auto facts = help::SystemFacts(context.Folders(), context.environment);
  auto libraries = help::Libraries();
  libraries.push_back({"CLI11", CLI11_VERSION, "BSD-3-Clause", ""});
  context.output.Line(help::AsText(facts, libraries));
  context.output.Object(AsObject(facts, libraries));
  return 0;
}

}  // namespace

void AddAboutCommand(CLI::App& app, Context& context) {
  auto* command = app.add_subcommand("about", "The version, the system, and the libraries with their licences");
  command->footer(
      "Holds no account and nobody's address, so it can go into a question for support.\nExample:\n  quillcast about");
  OnRun(*command, context, RunAbout);
}

}  // namespace quillcast::cli

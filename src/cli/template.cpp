// quillcast template list|show|save|rename|remove|export|import: the letters that others begin from.
#include <fmt/format.h>

#include <memory>

#include "cli/commands.h"
#include "cli/store_command.h"
#include "document/designs.h"
#include "document/own_templates.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

namespace fs = std::filesystem;
using document::IfThere;
using document::OwnTemplates;

struct TemplateOptions {
  std::string name;
  std::string new_name;
  std::string file;
};

OwnTemplates OwnOf(const Context& context) { return OwnTemplates(context.Folders().Templates()); }

int Conclude(Context& context, const Result<void>& done, const std::string& told,
             const nlohmann::ordered_json& object) {
  if (!done) return context.output.Fail(done.error());
  context.output.Line(told);
  context.output.Object(object);
  return 0;
}

int RunTemplateList(Context& context) {
  const auto own = OwnOf(context).List();
  if (!own) return context.output.Fail(own.error());
  for (const std::string_view design : document::kDesigns) {
    context.output.Columns({std::string(design), "design"});
    context.output.Object({{"template", design}, {"own", false}});
  }
  for (const std::string& name : *own) {
    context.output.Columns({name, "yours"});
    context.output.Object({{"template", name}, {"own", true}});
  }
  if (own->empty())
    context.output.Note("There are none of yours yet. `quillcast template save NAME FILE` keeps a letter.");
  return 0;
}

int RunTemplateShow(Context& context, const TemplateOptions& options) {
  const auto design = document::FindDesign(options.name);
  const auto html =
      design ? document::ReadDesign(*design, context.Folders().program) : OwnOf(context).Read(options.name);
  if (!html) return context.output.Fail(html.error());
  context.output.Html(*html);
  context.output.Object({{"template", options.name}, {"own", !design.has_value()}, {"html", *html}});
  return 0;
}

// What stands under the name is replaced after a Yes alone, also what another run puts there meanwhile.
Result<IfThere> AskAboutName(Context& context, const OwnTemplates& own, const std::string& name) {
  if (context.assume_yes) return IfThere::kReplace;
  if (!own.Has(name)) return IfThere::kFail;
  const auto asked = AskFirst(context, Say("There is a template \"{}\" already. Replace it?", name));
  return asked ? Result<IfThere>(IfThere::kReplace) : asked.error();
}

int KeepAs(Context& context, const std::string& name, const TemplateOptions& options) {
  const profile::Folders folders = context.Folders();
  const OwnTemplates own(folders.Templates());
  const auto letter = document::ReadLetterToKeep(options.file, folders);
  if (!letter) return context.output.Fail(letter.error());
  const auto if_there = AskAboutName(context, own, name);
  if (!if_there) return context.output.Fail(if_there.error());
  const auto kept = own.Keep(name, *letter, *if_there, &context.cancel);
  return Conclude(context, kept, fmt::format("Template \"{}\" is kept.", platform::Printable(name)),
                  {{"template", name}, {"done", "save"}});
}

int RunSave(Context& context, const TemplateOptions& options) { return KeepAs(context, options.name, options); }

int RunTemplateImport(Context& context, const TemplateOptions& options) {
  return KeepAs(context, options.name.empty() ? fs::path(options.file).stem().string() : options.name, options);
}

int RunRename(Context& context, const TemplateOptions& options) {
  const OwnTemplates own = OwnOf(context);
  const bool asks = own.Has(options.name) && options.name != options.new_name;
  const auto if_there = asks ? AskAboutName(context, own, options.new_name) : Result<IfThere>(IfThere::kFail);
  if (!if_there) return context.output.Fail(if_there.error());
  return Conclude(context, own.Rename(options.name, options.new_name, *if_there),
                  fmt::format(R"(Template "{}" is now "{}".)", options.name, options.new_name),
                  {{"template", options.new_name}, {"done", "rename"}, {"old", options.name}});
}

int RunRemove(Context& context, const TemplateOptions& options) {
  const OwnTemplates own = OwnOf(context);
  if (own.Has(options.name)) {
    const auto asked = AskFirst(context, Say("Are you sure you want to remove the template \"{}\"?", options.name));
    if (!asked) return context.output.Fail(asked.error());
  }
  return Conclude(context, own.Remove(options.name),
                  fmt::format("Template \"{}\" was removed. Letters begun from it keep their pictures.", options.name),
                  {{"template", options.name}, {"done", "remove"}});
}

int RunTemplateExport(Context& context, const TemplateOptions& options) {
  const profile::Folders folders = context.Folders();
  const fs::path file = fs::absolute(options.file, IgnoreErrors());
  if (fs::exists(file, IgnoreErrors())) {
    const auto asked = AskFirst(context, Say("{} is there already. Replace it?", file.string()));
    if (!asked) return context.output.Fail(asked.error());
  }
  const auto may_export = OwnTemplates::MayExportTo(file, folders, context.prompts);
  if (!may_export) return context.output.Fail(may_export.error());
  const auto done = OwnTemplates(folders.Templates()).Export(options.name, folders, file, &context.cancel);
  return Conclude(context, done, fmt::format("Template \"{}\" is in {}.", options.name, file.string()),
                  {{"template", options.name}, {"done", "export"}, {"file", file.string()}});
}

using Action = int (*)(Context&, const TemplateOptions&);

struct Row {
  const char* command;
  const char* what;
  std::vector<const char*> arguments;
  Action action;
  const char* example;
};

void AddArgument(CLI::App& command, TemplateOptions& options, std::string_view argument) {
  if (argument == "NAME") command.add_option("NAME", options.name, "The template")->required();
  if (argument == "NEW") command.add_option("NEW", options.new_name, "Its new name")->required();
  if (argument == "FILE") command.add_option("FILE", options.file, "An HTML file")->required();
  if (argument == "--name")
    command.add_option("--name", options.name, "Its name here; that of the file is the usual one");
}

}  // namespace

void AddTemplateCommand(CLI::App& app, Context& context) {
  auto* group = app.add_subcommand("template", "The five designs, and the letters that you keep to begin others from");
  group->require_subcommand(1);
  group->footer("Example: quillcast template save Monthly letter.html");
  auto* list = group->add_subcommand("list", "The designs and your own");
  list->footer("Example:\n  quillcast template list");
  OnRun(*list, context, RunTemplateList);
  for (const Row& row : std::initializer_list<Row>{
           {"show",
            "The HTML of a design, as it is before anything is filled in, or of one of yours",
            {"NAME"},
            RunTemplateShow,
            "show Travel"},
           {"save",
            "Keep a letter, and copies of the pictures in its folder, under a name",
            {"NAME", "FILE"},
            RunSave,
            "save Monthly letter.html"},
           {"rename", "Give one of yours another name", {"NAME", "NEW"}, RunRename, "rename Monthly 'Monthly letter'"},
           {"remove", "Remove one of yours", {"NAME"}, RunRemove, "remove Monthly --yes"},
           {"export",
            "Write one of yours to a file, its pictures beside it",
            {"NAME", "FILE"},
            RunTemplateExport,
            "export Monthly monthly.html"},
           {"import",
            "Keep a file that came from elsewhere",
            {"FILE", "--name"},
            RunTemplateImport,
            "import monthly.html --name Monthly"},
       }) {
    auto* command = group->add_subcommand(row.command, row.what);
    const auto options = std::make_shared<TemplateOptions>();
    for (const char* argument : row.arguments) AddArgument(*command, *options, argument);
    command->footer(fmt::format("Example:\n  quillcast template {}", row.example));
    OnRun(*command, context, [options, action = row.action](Context& c) { return action(c, *options); });
  }
}

}  // namespace quillcast::cli

// quillcast properties: what the properties dialog says of a document.
#include <fmt/format.h>

#include "cli/commands.h"
#include "document/message_document.h"
#include "document/message_properties.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

struct PropertiesOptions {
  std::string file;
};

int RunProperties(Context& context, const PropertiesOptions& options) {
  document::MessageDocument document;
  const auto loaded = document::LoadBody(document, options.file);
  if (!loaded) return context.output.Fail(loaded.error());
  std::error_code failed;  // the current folder is gone: the name as given is the best there is
  const auto absolute = std::filesystem::absolute(options.file, failed);
  const auto properties = document::PropertiesLoad(failed ? options.file : absolute.string(),
                                                   document::TitleOf(document.html), document.html);
  for (const auto& [label, text] :
       std::initializer_list<std::pair<const char*, std::string_view>>{{"Location", properties.location},
                                                                       {"Title", properties.title},
                                                                       {"Direction", properties.direction},
                                                                       {"Language", properties.language},
                                                                       {"Character set", properties.charset}}) {
    context.output.Line(fmt::format("{}: {}", label, platform::Printable(text)));
  }
  context.output.Object({{"location", properties.location},
                         {"title", properties.title},
                         {"direction", properties.direction},
                         {"language", properties.language},
                         {"charset", properties.charset}});
  return 0;
}

}  // namespace

void AddPropertiesCommand(CLI::App& app, Context& context) {
  auto* command = app.add_subcommand("properties", "A document's location, title, direction, language, character set");
  auto options = std::make_shared<PropertiesOptions>();
  command->add_option("file", options->file, "An HTML file, or a text file whose name ends in .txt")
      ->required()
      ->type_name("FILE");
  command->footer("Example:\n  quillcast properties letter.html");
  OnRun(*command, context, [options](Context& c) { return RunProperties(c, *options); });
}

}  // namespace quillcast::cli

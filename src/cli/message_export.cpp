// quillcast message export: the message as a message file, without sending it.
#include <fmt/format.h>

#include "cli/document_options.h"
#include "cli/message_commands.h"
#include "cli/send_steps.h"
#include "platform/file_attributes.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

struct MessageExportOptions {
  DocumentOptions document;
  std::string file;
  bool draft = false;
};

int RunMessageExport(Context& context, const MessageExportOptions& options) {
  if (const auto named = CheckNamesAFile(options.file); !named) return context.output.Fail(named.error());
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  auto prepared = PrepareRun(context, *folders, options.document, run::ChosenGroup());
  if (!prepared) return context.output.Fail(prepared.error());
  if (const int refused = AskToWrite(context, options.file)) return refused;
  const auto exported = prepared->Export({options.file, options.draft});
  if (!exported) return context.output.Fail(exported.error());
  for (const Sentence& note : exported->notes) context.output.Note(note.InEnglish());
  context.output.Line(fmt::format("The message is in {}. Nothing was sent.", platform::Printable(options.file, 4096)));
  context.output.Object({{"file", options.file}, {"octets", exported->octets}, {"draft", options.draft}});
  return 0;
}

}  // namespace

void AddMessageExport(CLI::App& message, Context& context) {
  CLI::App& command = *message.add_subcommand("export", "Write the message into a file (.eml), without sending it");
  const auto options = std::make_shared<MessageExportOptions>();
  AddDocumentOptions(command, options->document, BodyIs::kFirst);
  command.add_option("-o,--output", options->file, "The file; what is there is replaced")
      ->required()
      ->type_name("FILE");
  command.add_flag("--draft", options->draft, "Keep it as a draft: mail readers open it to be written on");
  command.footer(
      "The merge tags are left as they are, and the message is addressed to nobody.\n"
      "Example:\n  quillcast message export letter.html --subject 'Hello' -o letter.eml");
  OnRun(command, context, [options](Context& ctx) { return RunMessageExport(ctx, *options); });
}

}  // namespace quillcast::cli

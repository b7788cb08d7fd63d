// quillcast preview: the message as a run would send it, with the merge tags left as they are.
#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/document_options.h"
#include "compose/merge_fields.h"
#include "platform/file.h"
#include "sending/message_template.h"

namespace quillcast::cli {
namespace {

struct PreviewOptions {
  DocumentOptions document;
  bool open = false;
};

// A tag that is replaced by itself stays.
compose::MergeValues TagsAsValues() {
  compose::MergeValues values;
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = compose::kMergeFields[i].tag;
  return values;
}

Result<std::filesystem::path> WritePreview(const app::Folders& folders, const compose::MessageDocument& document,
                                           const sending::AccountSettings& account, Context& context) {
  auto options = MessageOptionsFrom(folders, account);
  if (!options) return options.error();
  options->name_field = 0;
  const std::string address = options->sender_address;
  const sending::MessageTemplate message(document, std::move(*options), folders.temporary, context.clock,
                                         context.entropy);
  if (const auto& trouble = message.trouble()) return trouble->error;
  for (const auto& trouble : message.picture_troubles()) context.output.Note(sending::Describe(trouble));
  if (document.format == compose::Format::kHtml) {
    const auto body = platform::ReplaceFile(folders.PreviewBody(), document.html);
    if (!body) return body.error();
  }
  sending::RenderedMessage rendered;
  const auto made = message.Render(TagsAsValues(), address, 1, rendered);
  if (!made) return made.error();
  const auto file = folders.PreviewMessage();
  const auto written = platform::ReplaceFile(file, [&](int fd) { return sending::WriteMessage(rendered, fd, file); });
  if (!written) return written.error();
  return file;
}

int RunPreview(Context& context, const PreviewOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  const app::SettingsStore settings(folders->settings);
  const auto account = sending::AccountSettings::Load(settings);
  if (!account) return context.output.Fail(account.error());
  const auto document = DocumentFrom(options.document, settings, context.prompts);
  if (!document) return context.output.Fail(document.error());
  const auto file = WritePreview(*folders, *document, *account, context);
  if (!file) return context.output.Fail(file.error());
  context.output.Line(fmt::format("The preview is {}.", file->string()));
  context.output.Object({{"file", file->string()}});
  if (!options.open) return 0;
  platform::XdgDesktop desktop(context.environment.Get("DISPLAY") || context.environment.Get("WAYLAND_DISPLAY"));
  const auto opened = desktop.OpenFile(*file);
  return opened ? 0 : context.output.Fail(opened.error());
}

}  // namespace

void AddPreviewCommand(CLI::App& app, Context& context) {
  auto* preview = app.add_subcommand("preview", "Write the complete message, merge tags left as they are");
  auto options = std::make_shared<PreviewOptions>();
  AddDocumentOptions(*preview, options->document);
  preview->add_flag("--open", options->open, "Open it with the desktop's program for .eml files");
  preview->footer("Example:\n  quillcast preview --subject 'Hello $*MergeFirstName*$' --body letter.html --open");
  OnRun(*preview, context, [options](Context& c) { return RunPreview(c, *options); });
}

}  // namespace quillcast::cli

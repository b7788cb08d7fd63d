// quillcast preview: the message as a run would send it, with the merge tags left as they are.
#include <fmt/format.h>

#include "account/account_settings.h"
#include "cli/commands.h"
#include "cli/document_options.h"
#include "cli/send_steps.h"
#include "platform/text.h"
#include "run/prepared_run.h"

namespace quillcast::cli {
namespace {

struct PreviewOptions {
  DocumentOptions document;
  bool open = false;
};

int RunPreview(Context& context, const PreviewOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  auto prepared = PrepareRun(context, *folders, options.document, run::ChosenGroup());
  if (!prepared) return context.output.Fail(prepared.error());
  const auto preview = prepared->WritePreview();
  if (!preview) return context.output.Fail(preview.error());
  for (const auto& note : preview->notes) context.output.Note(note.InEnglish());
  context.output.Line(fmt::format("The preview is {}.", preview->file.string()));
  std::vector<std::string> pictures;
  for (const auto& picture : preview->pictures) pictures.push_back(platform::Printable(picture.string(), 4096));
  context.output.Object({{"file", preview->file.string()}, {"pictures", pictures}});
  if (!options.open) return 0;
  platform::XdgDesktop desktop(context.environment.Get("DISPLAY") || context.environment.Get("WAYLAND_DISPLAY"));
  const auto opened = desktop.OpenFile(preview->file);
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

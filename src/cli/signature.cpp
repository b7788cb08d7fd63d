// quillcast signature get|set|reset: what new messages in the window start with.
#include "document/signature.h"

#include <memory>

#include "cli/commands.h"
#include "document/document_pictures.h"
#include "document/own_templates.h"

namespace quillcast::cli {
namespace {

struct SignatureOptions {
  std::string file;
  bool on = false;
  bool off = false;
};

constexpr const char* kIsOn = "The signature is on: new messages in the window start with it.";
constexpr const char* kIsOff = "The signature is off: new messages start empty.";

int RunGet(Context& context) {
  const profile::SettingsStore settings(context.Folders().settings);
  const auto signature = document::LoadSignature(settings);
  if (!signature) return context.output.Fail(signature.error());
  context.output.Note(signature->is_on ? kIsOn : kIsOff);
  context.output.Html(signature->html);
  context.output.Object({{"on", signature->is_on},
                         {"built_in", signature->html == document::kBuiltInSignature},
                         {"html", signature->html}});
  return 0;
}

// Its pictures are copied among the program's own, for a message without a file finds none beside itself.
Result<std::string> HtmlFrom(const std::string& file, const profile::Folders& folders,
                             const platform::CancelToken& cancel) {
  const auto letter = document::ReadLetterToKeep(file, folders);
  if (!letter) return letter.error();
  return document::CopyPictures(letter->html, letter->base, letter->places,
                                {folders.Pictures(), document::FileAddress(folders.Pictures())}, &cancel);
}

int RunSignatureSet(Context& context, const SignatureOptions& options) {
  if (options.file.empty() && !options.on && !options.off) {
    return context.output.Complain("There is nothing to set. Name a file, --on or --off.");
  }
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  profile::SettingsStore settings(folders->settings);
  auto signature = document::LoadSignature(settings);
  if (!signature) return context.output.Fail(signature.error());
  if (!options.file.empty()) {
    auto html = HtmlFrom(options.file, *folders, context.cancel);
    if (!html) return context.output.Fail(html.error());
    signature->html = *std::move(html);
  }
  if (options.on || options.off) signature->is_on = options.on;
  const auto saved = document::SaveSignature(*signature, settings);
  if (!saved) return context.output.Fail(saved.error());
  std::vector<std::string> notes;
  for (const auto& note : document::SignatureNotes(signature->html)) {
    context.output.Note(notes.emplace_back(note.InEnglish()));
  }
  context.output.Line(signature->is_on ? kIsOn : kIsOff);
  context.output.Object({{"saved", true}, {"on", signature->is_on}, {"notes", notes}});
  return 0;
}

int RunSignatureReset(Context& context) {
  profile::SettingsStore settings(context.Folders().settings);
  const auto reset = document::ResetSignature(settings, context.prompts);
  if (!reset) return context.output.Fail(reset.error());
  if (!*reset) {
    return context.output.Fail({Failure::kNotPermitted, "Nothing was changed.", "`--yes` answers the question."});
  }
  context.output.Line("The signature is back to the built-in one, and off.");
  context.output.Object({{"reset", true}});
  return 0;
}

}  // namespace

void AddSignatureCommand(CLI::App& app, Context& context) {
  auto* signature = app.add_subcommand("signature", "What new messages in the window start with");
  signature->require_subcommand(1);
  signature->footer("Example: quillcast signature set signature.html --on");

  auto* get = signature->add_subcommand("get", "The signature as HTML, and whether it is on");
  get->footer("Example:\n  quillcast signature get > signature.html");
  OnRun(*get, context, RunGet);

  auto* set = signature->add_subcommand("set", "Keep a file as the signature, switch it on or off, or both");
  const auto options = std::make_shared<SignatureOptions>();
  set->add_option("FILE", options->file, "An HTML file, or a text file whose name ends in .txt");
  auto* on = set->add_flag("--on", options->on, "New messages start with it");
  set->add_flag("--off", options->off, "New messages start empty")->excludes(on);
  set->footer("Example:\n  quillcast signature set signature.html --on");
  OnRun(*set, context, [options](Context& c) { return RunSignatureSet(c, *options); });

  auto* reset = signature->add_subcommand("reset", "Back to the built-in signature, switched off");
  reset->footer("Example:\n  quillcast signature reset --yes");
  OnRun(*reset, context, RunSignatureReset);
}

}  // namespace quillcast::cli

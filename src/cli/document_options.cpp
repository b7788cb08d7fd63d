#include "cli/document_options.h"

#include <fmt/format.h>

#include "platform/text.h"
#include "profile/main_window_contents.h"

namespace quillcast::cli {
namespace {

// The format box as it starts, then as it is picked.
Result<void> ChooseFormat(document::MessageDocument& document, const std::string& asked,
                          const profile::SettingsStore& settings, platform::Prompts& prompts) {
  const auto contents = profile::LoadMainWindow(settings, {});
  if (!contents) return contents.error();
  std::string format = contents->format;
  if (!asked.empty()) {
    auto picked = document::PickFormat(asked, settings, prompts);
    if (!picked) return picked.error();
    format = *picked;
  } else if (document.format == document::Format::kText) {
    return {};  // the body came from a text file
  }
  document.format = document::FormatFrom(format);
  return {};
}

Result<void> AllowFolders(const std::vector<std::string>& folders, document::PicturePlaces& places) {
  for (const auto& folder : folders) {
    if (!std::filesystem::is_directory(folder, IgnoreErrors())) {
      return Error{Failure::kUsage, Say("--pictures-from names no folder: {}", platform::Printable(folder, 300)),
                   "Give it a folder that exists."};
    }
    places.AllowFolder(std::filesystem::absolute(folder, IgnoreErrors()));
  }
  return {};
}

}  // namespace

void AddDocumentOptions(CLI::App& command, DocumentOptions& options, BodyIs body) {
  command.add_option("--subject", options.subject, "The subject; merge tags such as $*MergeFirstName*$ are replaced");
  command
      .add_option(body == BodyIs::kFirst ? "DOCUMENT" : "--body", options.body,
                  "The body: an HTML file, or a text file whose name ends in .txt")
      ->required()
      ->type_name(body == BodyIs::kFirst ? "" : "FILE");
  command.add_option("--text", options.text, "A text part of your own, instead of the one made from the HTML")
      ->type_name("FILE");
  command.add_option("--format", options.format, "How the body is sent")->check(CLI::IsMember({"HTML", "Text"}));
  command.add_option("--attach", options.attachments, "A file to go with each message; may be given several times")
      ->type_name("FILE");
  command
      .add_option("--pictures-from", options.pictures_from,
                  "Also take the pictures that the body names in this folder; may be given several times. Those in the "
                  "body's own folder need no option")
      ->type_name("DIR");
  command.add_option("--priority", options.priority, "The priority")->check(CLI::IsMember({"Low", "Normal", "High"}));
  command.add_flag("--read-receipt", options.read_receipt, "Ask each reader for a receipt");
}

Result<document::MessageDocument> DocumentFrom(const DocumentOptions& options, const profile::Folders& folders,
                                               const profile::SettingsStore& settings, platform::Prompts& prompts) {
  document::MessageDocument document;
  document.picture_places = document::PicturePlaces(folders);
  auto allowed = AllowFolders(options.pictures_from, document.picture_places);
  if (!allowed) return allowed.error();
  auto loaded = document::LoadBody(document, options.body);
  if (!loaded) return loaded.error();
  if (!options.text.empty()) {
    document::MessageDocument text;
    loaded = document::LoadBody(text, options.text);
    if (!loaded) return loaded.error();
    document.text = text.text ? *text.text : text.html;
    document.sources.emplace_back(options.text);
  }
  auto chosen = ChooseFormat(document, options.format, settings, prompts);
  if (!chosen) return chosen.error();
  document.subject = options.subject;
  document.priority = document::PriorityFrom(options.priority);
  document.read_receipt = options.read_receipt;
  for (const auto& file : options.attachments) {
    if (file.empty()) return Error{Failure::kUsage, "--attach names no file.", "Give it the path of a file."};
    std::error_code failed;  // the current folder is gone: opening the file tells the failure
    const auto path = std::filesystem::absolute(file, failed);
    document.attachments.Add(failed ? file : path.string());
  }
  return document;
}

}  // namespace quillcast::cli

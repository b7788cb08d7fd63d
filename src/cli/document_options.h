// The options that describe a message, shared by the commands that compose one.
#pragma once

#include <string>
#include <vector>

#include "cli/context.h"
#include "document/message_document.h"
#include "profile/folders.h"

namespace quillcast::cli {

// As they were typed; files are not opened before DocumentFrom.
struct DocumentOptions {
  std::string subject;
  std::string body;
  std::string text;
  std::string format;
  std::string priority = "Normal";
  std::vector<std::string> attachments;
  bool read_receipt = false;
  std::vector<std::string> pictures_from;
};

// `options` must outlive the command, which fills it when the line is parsed. The body is named by an option, or stands
// first on the line.
enum class BodyIs { kOption, kFirst };
void AddDocumentOptions(CLI::App& command, DocumentOptions& options, BodyIs body = BodyIs::kOption);

// Reads the body and builds the document, which may take pictures from its own folder, those of the program, and
// --pictures-from. The format is the option's, else what the settings start with.
Result<document::MessageDocument> DocumentFrom(const DocumentOptions& options, const profile::Folders& folders,
                                               const profile::SettingsStore& settings, platform::Prompts& prompts);

}  // namespace quillcast::cli

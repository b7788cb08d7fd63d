// What the commands for message files share.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/context.h"
#include "mail_file/body_formats.h"
#include "mail_file/mail_message.h"

namespace quillcast::cli {

// The message files that a command takes; "-" is standard input.
struct MessageFiles {
  std::vector<std::string> names;
  bool extended = false;
};
void AddMessageFiles(CLI::App& command, MessageFiles& files);

// "-f", which names a form of the body.
void AddBodyFormat(CLI::App& command, mail_file::BodyFormat& format, const char* help);

// Loads each, as the account's "Extended" or the option says, tells what was found wrong on standard error, and calls
// `use` with those of which something was loaded; `use` gives an exit code. The exit code of the whole: that of the
// last failure; 65 where a message was used in spite of a code, 66 where nothing could be loaded, 75 after a cancel.
struct LoadedFile {
  const std::string& name;  // as it was given
  const std::filesystem::path& path;
  mail_file::LoadMode mode;
  const mail_file::Loading& loading;
};
using UseMessage = std::function<int(const LoadedFile& file)>;
int WithMessages(Context& context, const MessageFiles& files, const UseMessage& use);

// Refuses "-", which is no file of that name here, and no standard output.
Result<void> CheckNamesAFile(const std::string& file);

// What was found wrong with a message, for programs.
nlohmann::ordered_json FaultsAsList(const mail_file::Loading& loading);

void AddMessageShow(CLI::App& message, Context& context);
void AddMessageExport(CLI::App& message, Context& context);
void AddMessageExtract(CLI::App& message, Context& context);
void AddMessageImport(CLI::App& message, Context& context);
void AddMessagePrint(CLI::App& message, Context& context);

}  // namespace quillcast::cli

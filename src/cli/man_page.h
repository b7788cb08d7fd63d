// The manual pages of the commands, made from what each of them says of itself: its texts, options and examples.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

#include "platform/result.h"

namespace quillcast::cli {

// "quillcast group sort".
std::string FullName(const CLI::App& command);

// "quillcast-group.1" of `quillcast group`, with all commands below it, in the language of man(7).
std::string ManPage(const CLI::App& command);

// One for each command of the program, into a folder, which is made where it is missing. Those of an earlier version
// are replaced.
Result<void> WriteManPages(const CLI::App& app, const std::filesystem::path& folder);

}  // namespace quillcast::cli

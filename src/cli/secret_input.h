// Passwords, which come from a file or a prompt, never from an argument.
#pragma once

#include <filesystem>
#include <string>

#include "platform/result.h"

namespace quillcast::cli {

// The first line of the file, or pipe, of at most 64 KiB, without its line end.
Result<std::string> SecretFromFile(const std::filesystem::path& file);

// Asked for on the terminal without showing what is typed.
Result<std::string> SecretFromTerminal(const std::string& question);

}  // namespace quillcast::cli

// The whole command line: reads the arguments, runs one command, gives its exit code.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/cancel.h"

namespace quillcast::cli {

// `arguments` without the program's own name.
int RunCommandLine(std::vector<std::string> arguments, const std::filesystem::path& executable,
                   platform::CancelToken& cancel);

}  // namespace quillcast::cli

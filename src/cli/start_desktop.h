// From the command to the window.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/environment.h"
#include "platform/result.h"

namespace quillcast::cli {

// `quillcast-desktop`, which stands beside the command. Errors: kNoInput where it is not installed.
Result<std::string> FindDesktop(const std::filesystem::path& executable);

// Becomes that program, where there is a display. Comes back only when it did not, with the reason.
Error StartDesktop(const std::filesystem::path& executable, const std::optional<std::filesystem::path>& profile,
                   const platform::Environment& environment);

}  // namespace quillcast::cli

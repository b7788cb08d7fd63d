// Pages drawn by `quillcast-desktop`, without a window: laying a text out is the toolkit's, which the command is
// without.
#pragma once

#include <filesystem>
#include <functional>

#include "mail_file/print_job.h"
#include "platform/cancel.h"

namespace quillcast::cli {

// Starts `program`, gives it the message file, and waits for its end; `see` is told of each page. `pdf` is the open
// file that it writes, -1 for a printer. A cancel ends it at once and is kCancelled. Errors: those of a program that
// cannot be started or breaks off.
using SeePage = std::function<void(int page, int of)>;
Result<mail_file::PrintedMessage> PrintByDesktop(std::string program, const mail_file::PrintJob& job,
                                                 const std::filesystem::path& message, int pdf,
                                                 const platform::CancelToken& cancel, const SeePage& see);

}  // namespace quillcast::cli

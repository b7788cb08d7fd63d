#include "cli/standard_input.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/file.h"

namespace quillcast::cli {
namespace {

// Until there is something to read, or the end.
Result<void> WaitForInput(const platform::CancelToken& cancel) {
  std::array<pollfd, 2> waiting = {pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{cancel.PollFd(), POLLIN, 0}};
  while (cancel.Requested() == platform::Stop::kNone) {
    if (::poll(waiting.data(), waiting.size(), -1) > 0 && waiting[0].revents != 0) return {};
  }
  return Error{Failure::kTryAgain, "Reading standard input was cancelled; nothing was changed."};
}

}  // namespace

Result<void> ReadStandardInput(const platform::CancelToken& cancel,
                               const std::function<Result<void>(std::string_view piece)>& take) {
  std::string block(platform::kFileBlock, '\0');
  for (;;) {
    if (auto waited = WaitForInput(cancel); !waited) return waited;
    const ssize_t count = ::read(STDIN_FILENO, block.data(), block.size());
    if (count == 0) return {};
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EBADF) {
      return Error{Failure::kNoInput, "Standard input is closed.",
                   "Direct a file or the output of another command to it, or name a file."};
    }
    if (count < 0) return platform::SystemError("read", "standard input", errno);
    if (auto taken = take(std::string_view(block).substr(0, static_cast<std::size_t>(count))); !taken) return taken;
  }
}

Result<InputFile> InputFile::Of(const std::string& name, const std::filesystem::path& scratch_folder,
                                const platform::CancelToken& cancel) {
  if (name != "-") return InputFile(name, {});
  if (const auto made = platform::EnsureFolder(scratch_folder); !made) return made.error();
  auto scratch = platform::OpenScratchFile(scratch_folder);
  if (!scratch) return scratch.error();
  const auto copied = ReadStandardInput(
      cancel, [&](std::string_view piece) { return platform::WriteAll(scratch->get(), scratch_folder, piece); });
  if (!copied) return copied.error();
  const auto path = "/proc/self/fd/" + std::to_string(scratch->get());
  return InputFile(path, std::move(*scratch));
}

}  // namespace quillcast::cli

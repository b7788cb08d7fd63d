#include "cli/standard_input.h"

#include <unistd.h>

#include <cerrno>

namespace quillcast::cli {
namespace {

constexpr std::size_t kBlock = std::size_t{256} * 1024;

Result<void> CopyStandardInput(int to, const std::filesystem::path& folder) {
  std::string block(kBlock, '\0');
  for (;;) {
    const ssize_t count = ::read(STDIN_FILENO, block.data(), block.size());
    if (count == 0) return {};
    if (count < 0 && errno == EBADF) {
      return Error{Failure::kNoInput, "Standard input is closed.",
                   "Direct a file or the output of another command to it, or name a file."};
    }
    // EINTR as well: the person who waits has had enough.
    if (count < 0) return platform::SystemError("read", "standard input", errno);
    auto written = platform::WriteAll(to, folder, std::string_view(block).substr(0, static_cast<std::size_t>(count)));
    if (!written) return written;
  }
}

}  // namespace

Result<InputFile> InputFile::Of(const std::string& name, const std::filesystem::path& scratch_folder) {
  if (name != "-") return InputFile(name, {});
  if (const auto made = platform::EnsureFolder(scratch_folder); !made) return made.error();
  auto scratch = platform::OpenScratchFile(scratch_folder);
  if (!scratch) return scratch.error();
  if (const auto copied = CopyStandardInput(scratch->get(), scratch_folder); !copied) return copied.error();
  const auto path = "/proc/self/fd/" + std::to_string(scratch->get());
  return InputFile(path, std::move(*scratch));
}

}  // namespace quillcast::cli

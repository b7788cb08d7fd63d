// A file that a command reads more than once, which may be standard input.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "platform/cancel.h"
#include "platform/file.h"

namespace quillcast::cli {

// Calls `take` with one piece after the other, to the end or until it fails. Once it is cancelled: kTryAgain, also in a
// wait for more.
Result<void> ReadStandardInput(const platform::CancelToken& cancel,
                               const std::function<Result<void>(std::string_view piece)>& take);

class InputFile {
 public:
  // "-" reads standard input to its end into a file without a name in `scratch_folder`, which is made where it is
  // missing, and vanishes with this.
  static Result<InputFile> Of(const std::string& name, const std::filesystem::path& scratch_folder,
                              const platform::CancelToken& cancel);

  // What to open, for as long as this lives.
  const std::filesystem::path& path() const { return path_; }

 private:
  InputFile(std::filesystem::path path, platform::UniqueFd scratch)
      : path_(std::move(path)), scratch_(std::move(scratch)) {}

  std::filesystem::path path_;
  platform::UniqueFd scratch_;
};

}  // namespace quillcast::cli

// The folder of one use of a message file: for what is unpacked on the way to where it belongs.
#pragma once

#include <filesystem>
#include <string>

#include "platform/clock.h"
#include "platform/result.h"

namespace quillcast::mail_file {

class WorkingFolder {
 public:
  // Makes "mm-dd-yyyy_hh-mm-ss" in the temporary folder, which is made too where it is missing, with mode 0700. What
  // exists under that name, whoever made it, is left alone: the next second that is free is taken.
  static Result<WorkingFolder> Make(const std::filesystem::path& temporary, const platform::Clock& clock);

  WorkingFolder(WorkingFolder&& other) noexcept;
  WorkingFolder& operator=(WorkingFolder&& other) noexcept;
  // With all that is in it; a link in it is removed, not what it leads to.
  ~WorkingFolder();

  const std::filesystem::path& path() const { return path_; }

 private:
  explicit WorkingFolder(std::filesystem::path path) : path_(std::move(path)) {}

  std::filesystem::path path_;  // empty after a move
};

}  // namespace quillcast::mail_file

// The lines of a report in its file, found by number, while it grows: of a million lines, their places alone are held.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/result.h"

namespace quillcast::run {

class ReportLines {
 public:
  // Fails when the file cannot be read.
  static Result<ReportLines> Open(const std::filesystem::path& file);

  // Takes in what was written since. True when there are more lines than before.
  Result<bool> Update();
  // Whole lines; one that is being written does not count yet.
  std::size_t size() const { return ends_.size(); }
  // Without its line end; cut at 64 KiB. Empty for a line that cannot be read.
  std::string At(std::size_t line) const;

 private:
  ReportLines(platform::UniqueFd fd, std::filesystem::path file) : fd_(std::move(fd)), file_(std::move(file)) {}

  platform::UniqueFd fd_;
  std::filesystem::path file_;
  std::vector<std::uint64_t> ends_;  // offsets behind each line's "\n"
  std::uint64_t read_ = 0;
};

}  // namespace quillcast::run

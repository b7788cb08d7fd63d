#include "run/report_lines.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace quillcast::run {
namespace {

constexpr std::size_t kLongestLine = std::size_t{64} * 1024;
constexpr std::size_t kReportBlock = std::size_t{64} * 1024;

}  // namespace

Result<ReportLines> ReportLines::Open(const std::filesystem::path& file) {
  auto fd = platform::OpenForReading(file);
  if (!fd) return fd.error();
  return ReportLines(std::move(*fd), file);
}

Result<bool> ReportLines::Update() {
  const std::size_t before = ends_.size();
  std::array<char, kReportBlock> block;  // NOLINT: filled below
  for (;;) {
    const auto got = platform::ReadSome(fd_.get(), file_, block.data(), block.size());
    if (!got) return got.error();
    if (*got == 0) return ends_.size() > before;
    const char* const end = block.data() + *got;
    for (const char* at = block.data(); at < end;) {
      const auto* newline = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
      if (newline == nullptr) break;
      at = newline + 1;
      ends_.push_back(read_ + static_cast<std::uint64_t>(at - block.data()));
    }
    read_ += *got;
  }
}

std::string ReportLines::At(std::size_t line) const {
  const std::uint64_t begin = line == 0 ? 0 : ends_[line - 1];
  std::string text(std::min<std::uint64_t>(ends_[line] - begin, kLongestLine), '\0');
  const auto got = ::pread(fd_.get(), text.data(), text.size(), static_cast<off_t>(begin));
  text.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

}  // namespace quillcast::run

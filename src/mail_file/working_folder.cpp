#include "mail_file/working_folder.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "platform/file.h"

namespace quillcast::mail_file {
namespace {

namespace fs = std::filesystem;

constexpr int kSecondsToTry = 3600;

std::string NameAt(const std::tm& local) {
  return fmt::format("{:02}-{:02}-{:04}_{:02}-{:02}-{:02}", local.tm_mon + 1, local.tm_mday, local.tm_year + 1900,
                     local.tm_hour, local.tm_min, local.tm_sec);
}

}  // namespace

Result<WorkingFolder> WorkingFolder::Make(const fs::path& temporary, const platform::Clock& clock) {
  if (const auto made = platform::EnsureFolder(temporary); !made) return made.error();
  auto moment = clock.Now();
  for (int tries = 0; tries < kSecondsToTry; ++tries, moment += std::chrono::seconds(1)) {
    fs::path path = temporary / NameAt(clock.Local(moment));
    if (::mkdir(path.c_str(), 0700) == 0) return WorkingFolder(std::move(path));
    if (errno != EEXIST) return platform::SystemError("create", path, errno);
  }
  return Error{Failure::kCannotCreate, Say("No free name was found for a folder in {}.", temporary.string()),
               "Remove old files there."};
}

WorkingFolder::WorkingFolder(WorkingFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}

WorkingFolder& WorkingFolder::operator=(WorkingFolder&& other) noexcept {
  std::swap(path_, other.path_);
  return *this;
}

WorkingFolder::~WorkingFolder() {
  if (!path_.empty()) fs::remove_all(path_, IgnoreErrors());
}

}  // namespace quillcast::mail_file

#include "mail_file/chosen_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "mail_file/safe_part_name.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// It may hold what an earlier time wrote.
constexpr const char* kHowToGoOn =
    "Name another folder, or a range of the list whose messages are not in it yet (--range).";

}  // namespace

Result<ChosenFolder> ChosenFolder::Open(const std::filesystem::path& path, const platform::OwnFiles& own) {
  if (const auto other = platform::CheckIsNotOwn(path, own); !other) return other.error();
  platform::UniqueFd fd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd) {
    Error error = platform::SystemError("write into", path, errno);
    error.failure = Failure::kCannotCreate;
    return error;
  }
  return ChosenFolder(path, std::move(fd), own);
}

Result<ChosenFolder> ChosenFolder::OpenOrMake(const std::filesystem::path& path, const platform::OwnFiles& own) {
  if (auto other = platform::CheckIsNotOwn(path, own); !other) return other.error();
  if (auto made = platform::EnsureFolder(path); !made) return made.error();
  return Open(path, own);
}

Result<ChosenFolder*> ChosenFolders::OpenOrMake(const std::filesystem::path& path) {
  if (const auto known = open_.find(path); known != open_.end()) {
    if (known->second.IsThere()) return &known->second;
    open_.erase(known);  // what stands there now, or nothing, is another one
  }
  auto folder = ChosenFolder::OpenOrMake(path, own_);
  if (!folder) return folder.error();
  return &open_.emplace(path, *std::move(folder)).first->second;
}

bool ChosenFolder::IsThere() const {
  struct stat opened {};
  struct stat there {};
  return ::fstat(fd_.get(), &opened) == 0 && ::stat(path_.c_str(), &there) == 0 && opened.st_dev == there.st_dev &&
         opened.st_ino == there.st_ino;
}

// O_EXCL takes a link for what exists. A name without a separator stays in the folder, whoever moves that meanwhile.
Result<platform::UniqueFd> ChosenFolder::CreateAs(const std::string& name) const {
  if (name.empty() || name == "." || name == ".." ||
      name.find_first_of(std::string_view("/\0", 2)) != std::string::npos) {
    return Error{Failure::kCannotCreate, Say("\"{}\" is no name for a file.", platform::Printable(name))};
  }
  if (std::ranges::find(own_names_, name) != own_names_.end()) {
    if (const auto other = platform::CheckIsNotOwn(path_ / name, own_); !other) return other.error();
  }
  platform::UniqueFd fd(::openat(fd_.get(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (fd || errno == EEXIST) return fd;
  return platform::SystemError("create", path_ / name, errno);
}

Result<platform::UniqueFd> ChosenFolder::Create(const std::string& name, std::string& taken) {
  std::size_t& number = last_number_[name];
  for (;;) {
    taken = number == 0 ? name : NumberedName(name, number + 1);
    ++number;
    auto fd = CreateAs(taken);
    if (!fd || *fd) return fd;
  }
}

Result<void> ChosenFolder::Fill(
    const platform::UniqueFd& fd, const std::string& taken,
    const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write) const {
  auto written = write(fd.get(), path_ / taken);
  if (!written) IgnoreErrors(::unlinkat(fd_.get(), taken.c_str(), 0));
  return written;
}

Result<std::string> ChosenFolder::WriteNew(
    const std::string& name, const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write) {
  std::string taken;
  const auto fd = Create(name, taken);
  if (!fd) return fd.error();
  if (const auto written = Fill(*fd, taken, write); !written) return written.error();
  return taken;
}

Result<void> ChosenFolder::WriteAs(
    const std::string& name, const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write) {
  const auto fd = CreateAs(name);
  if (!fd) return fd.error();
  if (!*fd) return IsThereAlready(path_ / name, kHowToGoOn);
  return Fill(*fd, name, write);
}

Error IsThereAlready(const std::filesystem::path& file, const char* remedy) {
  return {Failure::kCannotCreate, Say("{} is there already, and is not written over.", file.string()), remedy};
}

}  // namespace quillcast::mail_file

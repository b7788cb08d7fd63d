#include "mail_file/chosen_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "mail_file/safe_part_name.h"
#include "platform/text.h"

namespace quillcast::mail_file {

Result<ChosenFolder> ChosenFolder::Open(const std::filesystem::path& path, const platform::OwnFiles& own) {
  if (const auto other = platform::CheckIsNotOwn(path, own); !other) return other.error();
  platform::UniqueFd fd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd) return platform::SystemError("create files in", path, errno);
  return ChosenFolder(path, std::move(fd));
}

// O_EXCL takes a link for what exists. A name without a separator stays in the folder, whoever moves that meanwhile.
Result<platform::UniqueFd> ChosenFolder::Create(const std::string& name, std::string& taken) {
  std::size_t& number = last_number_[name];
  for (;;) {
    taken = number == 0 ? name : NumberedName(name, number + 1);
    ++number;
    platform::UniqueFd fd(
        ::openat(fd_.get(), taken.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (fd) return fd;
    if (errno != EEXIST) return platform::SystemError("create", path_ / taken, errno);
  }
}

Result<std::string> ChosenFolder::WriteNew(
    const std::string& name, const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write) {
  if (name.empty() || name == "." || name == ".." ||
      name.find_first_of(std::string_view("/\0", 2)) != std::string::npos) {
    return Error{Failure::kCannotCreate, Say("\"{}\" is no name for a file.", platform::Printable(name))};
  }
  std::string taken;
  const auto fd = Create(name, taken);
  if (!fd) return fd.error();
  if (const auto written = write(fd->get(), path_ / taken); !written) {
    IgnoreErrors(::unlinkat(fd_.get(), taken.c_str(), 0));
    return written.error();
  }
  return taken;
}

}  // namespace quillcast::mail_file

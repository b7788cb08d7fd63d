#include "message/file_source.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>

#include "document/picture_kind.h"
#include "message/body_import.h"

namespace quillcast::message {
namespace {

namespace fs = std::filesystem;

// What is wrong with a path before it is opened; 0 for nothing.
std::int32_t LookAtPath(const fs::path& file) {
  std::error_code failed;
  const auto status = fs::status(file, failed);
  if (failed == std::errc::filename_too_long) return kBodyNoFile;
  if (!fs::exists(status)) return kBodyNotOpened;
  if (fs::is_directory(status)) return kBodyNotRead;
  return fs::is_regular_file(status) ? 0 : kBodyNoFile;
}

// Whether what was opened has this path: a folder on the way may have become a link to elsewhere meanwhile. What cannot
// be known counts as no.
bool IsStill(int fd, const fs::path& real) {
  std::error_code failed;
  const fs::path opened = fs::read_symlink(fmt::format("/proc/self/fd/{}", fd), failed);
  return !failed && opened == real;
}

OpenedFile Opened(Result<platform::UniqueFd> fd) {
  if (fd) return *std::move(fd);
  return FileTrouble{smtp::ResultCode::kFileNotOpened, fd.error()};
}

Result<platform::UniqueFd> OpenAgain(const Picture& picture) {
  auto fd = platform::OpenForReading(picture.file);
  if (!fd) return fd;
  struct stat status {};
  if (::fstat(fd->get(), &status) != 0) return platform::SystemError("read", picture.file, errno);
  if (status.st_dev == picture.device && status.st_ino == picture.inode) return fd;
  return Error{Failure::kIo, Say("The picture {} was replaced while the message was made.", picture.file.string()),
               "Send again."};
}

}  // namespace

DocumentFiles::DocumentFiles(const document::MessageDocument& document)
    : places_(document.picture_places.WithOwnFolder(document.base_folder)), folders_(places_.RealFolders()) {}

OpenedFile DocumentFiles::OpenAttachment(const fs::path& file) const { return Opened(platform::OpenForReading(file)); }

OpenedFile DocumentFiles::OpenPicture(const Picture& picture) const { return Opened(OpenAgain(picture)); }

// The file may have become another since its path was looked at; that is told as not opened. A foreign one goes by its
// real name, so that the person sees what a link would give away.
FoundPicture DocumentFiles::FindPicture(const fs::path& file) const {
  const auto trouble = [&](std::int32_t code) { return PictureTrouble{file.string(), code}; };
  if (const auto code = LookAtPath(file)) return trouble(code);
  std::error_code failed;
  const fs::path real = fs::canonical(file, failed);
  const auto fd = platform::OpenForReading(real);
  if (failed || !fd || !IsStill(fd->get(), real)) return trouble(kBodyNotOpened);
  const auto type = document::PictureType(fd->get(), file);
  struct stat status {};
  if (!type || ::fstat(fd->get(), &status) != 0) return trouble(kBodyNotRead);
  if (type->empty()) return trouble(kBodyNotParsed);
  if (!places_.Hold(real, folders_)) return ForeignPicture{real, places_.IsLeftOut(real)};
  return Picture{file, {}, *type, static_cast<std::uint64_t>(status.st_size), status.st_dev, status.st_ino};
}

}  // namespace quillcast::message

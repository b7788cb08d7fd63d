#include "sending/related_pictures.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>

#include "mime/local_pictures.h"
#include "mime/media_type.h"
#include "platform/text.h"
#include "sending/send_status.h"

namespace quillcast::sending {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLookedAt = 512;

// What is wrong with a path before it is opened; 0 for nothing.
std::int32_t LookAtPath(const fs::path& file) {
  std::error_code failed;
  const auto status = fs::status(file, failed);
  if (failed == std::errc::filename_too_long) return kBodyNoFile;
  if (!fs::exists(status)) return kBodyNotOpened;
  if (fs::is_directory(status)) return kBodyNotRead;
  return fs::is_regular_file(status) ? 0 : kBodyNoFile;
}

// Looks into it, or says why not. The file may have become another since its path was looked at; that is told as not
// opened.
std::int32_t LookInto(const fs::path& file, Picture& picture) {
  if (const auto code = LookAtPath(file)) return code;
  auto fd = platform::OpenForReading(file);
  if (!fd) return kBodyNotOpened;
  std::string start(kLookedAt, '\0');
  const auto got = platform::ReadSome(fd->get(), file, start.data(), start.size());
  struct stat status {};
  if (!got || ::fstat(fd->get(), &status) != 0) return kBodyNotRead;
  const std::string_view type = mime::MediaTypeOf("", std::string_view(start).substr(0, *got));
  if (!type.starts_with("image/")) return kBodyNotParsed;
  picture = Picture{file, {}, std::string(type), status.st_dev, status.st_ino};
  return 0;
}

}  // namespace

std::string Describe(const PictureTrouble& trouble) {
  const char* const what = trouble.code == kBodyNotOpened ? "is missing or may not be read"
                           : trouble.code == kBodyNotRead ? "cannot be read"
                           : trouble.code == kBodyNoFile  ? "is no file that can be taken along"
                                                          : "is no picture";
  return fmt::format("The picture {} {}.", platform::Printable(trouble.file, 300), what);
}

Result<platform::UniqueFd> OpenAgain(const Picture& picture) {
  auto fd = platform::OpenForReading(picture.file);
  if (!fd) return fd;
  struct stat status {};
  if (::fstat(fd->get(), &status) != 0) return platform::SystemError("read", picture.file, errno);
  if (status.st_dev == picture.device && status.st_ino == picture.inode) return fd;
  return Error{Failure::kIo,
               fmt::format("The picture {} was replaced while the message was made.", picture.file.string()),
               "Send again."};
}

RelatedPictures TakePictures(std::string_view html, const fs::path& base_folder, std::string_view content_id_suffix) {
  RelatedPictures result;
  std::map<fs::path, std::string> content_ids;  // empty for a file that cannot be taken
  std::vector<mime::PictureReference> taken;
  std::vector<std::string> replacements;
  for (auto& reference : mime::FindLocalPictures(html)) {
    const fs::path file = (base_folder / reference.path).lexically_normal();
    const auto [known, is_new] = content_ids.try_emplace(file);
    if (is_new) {
      Picture picture;
      if (const auto code = LookInto(file, picture)) {
        result.troubles.push_back({file.string(), code});
      } else {
        known->second = fmt::format("picture{}.{}", result.pictures.size() + 1, content_id_suffix);
        picture.content_id = known->second;
        result.pictures.push_back(std::move(picture));
      }
    }
    if (known->second.empty()) continue;
    replacements.push_back("cid:" + known->second);
    taken.push_back(std::move(reference));
  }
  result.html = mime::RewriteReferences(html, taken, replacements);
  return result;
}

}  // namespace quillcast::sending

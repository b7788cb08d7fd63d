#include "document/picture_kind.h"

#include "mime/media_type.h"
#include "platform/file.h"

namespace quillcast::document {
namespace {

constexpr std::size_t kLookedAt = 512;

}  // namespace

std::string_view PictureType(std::string_view first_bytes) {
  const std::string_view type = mime::MediaTypeOf("", first_bytes.substr(0, kLookedAt));
  return type.starts_with("image/") ? type : std::string_view();
}

Result<std::string> PictureType(int fd, const std::filesystem::path& file) {
  std::string start(kLookedAt, '\0');
  const auto got = platform::ReadSome(fd, file, start.data(), start.size());
  if (!got) return got.error();
  return std::string(PictureType(std::string_view(start).substr(0, *got)));
}

bool IsPicture(const std::filesystem::path& file) {
  const auto fd = platform::OpenForReading(file);
  if (!fd) return false;
  const auto type = PictureType(fd->get(), file);
  return type && !type->empty();
}

}  // namespace quillcast::document

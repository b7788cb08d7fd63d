#include "sending/related_pictures.h"

#include <fmt/format.h>
#include <unistd.h>

#include <map>
#include <optional>

#include "mime/local_pictures.h"
#include "mime/media_type.h"

namespace quillcast::sending {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLookedAt = 512;

std::optional<Picture> OpenPicture(const fs::path& file) {
  auto fd = platform::OpenForReading(file);
  if (!fd) return {};
  std::string start(kLookedAt, '\0');
  const auto got = platform::ReadSome(fd->get(), file, start.data(), start.size());
  if (!got || ::lseek(fd->get(), 0, SEEK_SET) != 0) return {};
  const std::string_view type = mime::MediaTypeOf("", std::string_view(start).substr(0, *got));
  if (!type.starts_with("image/")) return {};
  return Picture{file, std::move(*fd), {}, std::string(type)};
}

}  // namespace

RelatedPictures TakePictures(std::string_view html, const fs::path& base_folder, std::string_view content_id_suffix) {
  RelatedPictures result;
  std::map<fs::path, std::string> content_ids;  // empty for a file that cannot be taken
  std::vector<mime::PictureReference> taken;
  std::vector<std::string> replacements;
  for (auto& reference : mime::FindLocalPictures(html)) {
    const fs::path file = (base_folder / reference.path).lexically_normal();
    const auto [known, is_new] = content_ids.try_emplace(file);
    if (is_new) {
      if (auto picture = OpenPicture(file)) {
        known->second = fmt::format("picture{}.{}", result.pictures.size() + 1, content_id_suffix);
        picture->content_id = known->second;
        result.pictures.push_back(std::move(*picture));
      } else {
        result.missing.push_back(file.string());
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

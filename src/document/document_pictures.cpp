#include "document/document_pictures.h"

#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "document/picture_copies.h"
#include "document/picture_kind.h"
#include "html/local_pictures.h"
#include "platform/text.h"

namespace quillcast::document {

namespace fs = std::filesystem;

std::string FileAddress(const fs::path& file) { return "file://" + platform::PercentEncoded(file.string()); }

Result<std::string> TakePicturesAlong(std::string_view html, const fs::path& base, const fs::path& import_folder,
                                      const PicturePlaces& places, const fs::path& target, TakenPictures& taken) {
  const fs::path root = (import_folder / "").lexically_normal().parent_path();
  const bool moves = !base.empty() && base.lexically_normal() != target.parent_path().lexically_normal();
  const std::string folder = target.stem().string() + "_files";
  const fs::path beside = target.parent_path() / folder;
  std::vector<html::PictureReference> references;
  std::vector<std::string> replacements;
  PictureCopies copies(beside);
  for (auto& reference : html::FindLocalPictures(html)) {
    const fs::path file = (base / reference.path).lexically_normal();
    const bool loses_its_folder = moves && fs::path(reference.path).is_relative();
    if (!IsBelow(file, root) && !loses_its_folder) continue;
    const bool is_there = fs::is_regular_file(file, IgnoreErrors());
    if (!is_there && !taken.contains(file)) continue;
    if (is_there && !places.Hold(file)) {
      if (!loses_its_folder) continue;
      replacements.push_back(FileAddress(file));
      references.push_back(std::move(reference));
      continue;
    }
    if (is_there) {
      const auto copy = copies.Keep(file);
      if (!copy) return copy.error();
      taken[file] = copy->filename().string();
    }
    replacements.push_back(platform::PercentEncoded(folder + '/' + taken[file]));
    references.push_back(std::move(reference));
  }
  return references.empty() ? std::string(html) : html::RewriteReferences(html, references, replacements);
}

namespace {

using AddressOf = std::function<Result<std::string>(const fs::path& file, bool relative)>;

// The HTML with each picture's address as `address_of` gives it for the file, which is asked once for each; empty for
// one that stays as it is.
Result<std::string> WithAddresses(std::string_view html, const fs::path& base, const AddressOf& address_of) {
  const auto references = html::FindLocalPictures(html);
  std::map<std::pair<std::string, bool>, std::string>
      known;  // by the path of the reference, and whether it is relative
  std::vector<std::string> addresses;
  for (const auto& reference : references) {
    const bool relative = reference.leads_to == html::LeadsTo::kFile && fs::path(reference.path).is_relative();
    const auto [entry, is_new] = known.try_emplace({reference.path, relative});
    if (is_new && !(fs::path(reference.path).is_relative() && base.empty())) {
      auto address = address_of((base / reference.path).lexically_normal(), relative);
      if (!address) return address.error();
      entry->second = std::move(*address);
    }
    addresses.push_back(entry->second);
  }
  return html::RewriteReferences(html, references, addresses);
}

}  // namespace

Result<std::string> CopyPictures(std::string_view html, const fs::path& base, const PicturePlaces& places,
                                 const PictureFolder& target, const platform::CancelToken* cancel) {
  const auto real_folders = places.RealFolders();
  PictureCopies copies(target.folder, cancel);
  return WithAddresses(html, base, [&](const fs::path& file, bool relative) -> Result<std::string> {
    if (!places.Hold(file, real_folders) || !IsPicture(file)) return relative ? FileAddress(file) : std::string();
    const auto copy = copies.Keep(file);
    if (!copy) return copy.error();
    return target.address + platform::PercentEncoded('/' + copy->filename().string());
  });
}

std::string WithAbsolutePictures(std::string_view html, const fs::path& base) {
  auto absolute = WithAddresses(html, base, [](const fs::path& file, bool relative) {
    return Result<std::string>(relative ? FileAddress(file) : std::string());
  });
  return *std::move(absolute);  // nothing is copied that could fail
}

}  // namespace quillcast::document

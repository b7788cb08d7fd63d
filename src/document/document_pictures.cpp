#include "document/document_pictures.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <vector>

#include "html/local_pictures.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

// What cannot be read is like nothing.
bool AreAlike(const fs::path& one, const fs::path& other) {
  std::error_code failed;
  if (fs::file_size(one, failed) != fs::file_size(other, failed) || failed) return false;
  std::ifstream first(one, std::ios::binary);
  std::ifstream second(other, std::ios::binary);
  return first && second &&
         std::equal(std::istreambuf_iterator<char>(first), {}, std::istreambuf_iterator<char>(second), {});
}

// The place for a copy under that name: that of a copy which is there already, or one that nothing has.
template <typename IsCopy>
fs::path PlaceIn(const fs::path& folder, const fs::path& wanted, const IsCopy& is_copy) {
  fs::path place = folder / wanted.filename();
  for (int number = 2; fs::exists(place, IgnoreErrors()) && !is_copy(place); ++number) {
    place = folder / fmt::format("{} ({}){}", wanted.stem().string(), number, wanted.extension().string());
  }
  return place;
}

}  // namespace

Result<fs::path> KeepPicture(const fs::path& file, const fs::path& folder) {
  const fs::path copy = PlaceIn(folder, file, [&](const fs::path& other) { return AreAlike(file, other); });
  auto made = platform::EnsureFolder(folder);
  if (made) made = platform::CopyFile(file, copy);
  if (!made) return made.error();
  return copy;
}

std::string FileAddress(const fs::path& file) { return "file://" + platform::PercentEncoded(file.string()); }

Result<fs::path> KeepPicture(std::string_view bytes, const std::string& name, const fs::path& folder) {
  const fs::path copy = PlaceIn(folder, name, [&](const fs::path& other) {
    const auto content = platform::ReadFile(other, bytes.size());
    return content && *content == bytes;
  });
  auto made = platform::EnsureFolder(folder);
  if (made) made = platform::ReplaceFile(copy, bytes);
  if (!made) return made.error();
  return copy;
}

Result<std::string> TakePicturesAlong(std::string_view html, const fs::path& base, const fs::path& import_folder,
                                      const PicturePlaces& places, const fs::path& target, TakenPictures& taken) {
  const fs::path root = (import_folder / "").lexically_normal().parent_path();
  const bool moves = !base.empty() && base.lexically_normal() != target.parent_path().lexically_normal();
  const std::string folder = target.stem().string() + "_files";
  const fs::path beside = target.parent_path() / folder;
  std::vector<html::PictureReference> references;
  std::vector<std::string> replacements;
  std::set<fs::path> seen;
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
    if (is_there && seen.insert(file).second) {
      const auto copy = KeepPicture(file, beside);
      if (!copy) return copy.error();
      taken[file] = copy->filename().string();
    }
    replacements.push_back(platform::PercentEncoded(folder + '/' + taken[file]));
    references.push_back(std::move(reference));
  }
  return references.empty() ? std::string(html) : html::RewriteReferences(html, references, replacements);
}

namespace {

// The HTML with each picture's address as `address_of` gives it for the file; empty for one that stays as it is.
Result<std::string> WithAddresses(
    std::string_view html, const fs::path& base,
    const std::function<Result<std::string>(const fs::path& file, bool relative)>& address_of) {
  const auto references = html::FindLocalPictures(html);
  std::vector<std::string> addresses;
  for (const auto& reference : references) {
    const bool relative = fs::path(reference.path).is_relative();
    auto address = relative && base.empty() ? Result<std::string>(std::string())
                                            : address_of((base / reference.path).lexically_normal(), relative);
    if (!address) return address.error();
    addresses.push_back(std::move(*address));
  }
  return html::RewriteReferences(html, references, addresses);
}

}  // namespace

Result<std::string> CopyPictures(std::string_view html, const fs::path& base, const PicturePlaces& places,
                                 const PictureFolder& target) {
  const auto real_folders = places.RealFolders();
  return WithAddresses(html, base, [&](const fs::path& file, bool relative) -> Result<std::string> {
    if (!fs::is_regular_file(file, IgnoreErrors()) || !places.Hold(file, real_folders)) {
      return relative ? FileAddress(file) : std::string();
    }
    const auto copy = KeepPicture(file, target.folder);
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

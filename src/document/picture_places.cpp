#include "document/picture_places.h"

#include <algorithm>
#include <utility>

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;

// Without links; empty for what is not there.
fs::path Real(const fs::path& path) {
  std::error_code failed;
  fs::path real = fs::canonical(path, failed);
  return failed ? fs::path() : real;
}

}  // namespace

bool IsBelow(const fs::path& file, const fs::path& folder) {
  const auto [end, at] = std::mismatch(folder.begin(), folder.end(), file.begin(), file.end());
  return end == folder.end() && at != file.end();
}

PicturePlaces::PicturePlaces(const profile::Folders& folders)
    : folders_{folders.ImportBody(), folders.program, folders.Pictures(), folders.Templates()} {}

void PicturePlaces::AllowFolder(const fs::path& folder) { folders_.push_back(folder); }

PicturePlaces PicturePlaces::WithOwnFolder(const fs::path& folder) const {
  PicturePlaces places = *this;
  const fs::path real = Real(folder);
  if (!folder.empty() && !real.empty() && real != real.root_path()) places.AllowFolder(real);
  return places;
}

void PicturePlaces::AllowFile(const fs::path& file) { allowed_.insert(Real(file)); }

void PicturePlaces::LeaveOut(const fs::path& file) { left_out_.insert(Real(file)); }

void PicturePlaces::Answer(const std::vector<fs::path>& files, bool take) {
  for (const auto& file : files) take ? AllowFile(file) : LeaveOut(file);
}

bool PicturePlaces::IsLeftOut(const fs::path& file) const { return left_out_.contains(Real(file)); }

std::vector<fs::path> PicturePlaces::RealFolders() const {
  std::vector<fs::path> real;
  for (const auto& folder : folders_) {
    fs::path place = Real(folder);
    if (!place.empty()) real.push_back(std::move(place));
  }
  return real;
}

bool PicturePlaces::Hold(const fs::path& file, const std::vector<fs::path>& real_folders) const {
  const fs::path real = Real(file);
  if (real.empty()) return false;
  if (allowed_.contains(real)) return true;
  return std::any_of(real_folders.begin(), real_folders.end(),
                     [&](const fs::path& place) { return IsBelow(real, place); });
}

}  // namespace quillcast::document

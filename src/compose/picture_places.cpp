#include "compose/picture_places.h"

#include <algorithm>

namespace quillcast::compose {
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

PicturePlaces::PicturePlaces(const app::Folders& folders)
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

bool PicturePlaces::IsLeftOut(const fs::path& file) const { return left_out_.contains(Real(file)); }

bool PicturePlaces::Hold(const fs::path& file) const {
  const fs::path real = Real(file);
  if (real.empty()) return false;
  if (allowed_.contains(real)) return true;
  return std::any_of(folders_.begin(), folders_.end(), [&](const fs::path& folder) {
    const fs::path place = Real(folder);
    return !place.empty() && IsBelow(real, place);
  });
}

}  // namespace quillcast::compose

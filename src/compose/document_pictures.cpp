#include "compose/document_pictures.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <vector>

#include "mime/local_pictures.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::compose {
namespace {

namespace fs = std::filesystem;

bool IsBelow(const fs::path& file, const fs::path& folder) {
  const auto [end, at] = std::mismatch(folder.begin(), folder.end(), file.begin(), file.end());
  return end == folder.end() && at != file.end();
}

// As a relative address: what could end it or mean something in it is written as percent and two digits.
std::string AsAddress(std::string_view path) {
  std::string address;
  for (const char c : path) {
    const bool is_plain = platform::AsciiIsAlnum(c) || c == '-' || c == '.' || c == '_' || c == '/';
    address += is_plain ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
  }
  return address;
}

// A name that no other file of the folder has.
std::string FreeName(const fs::path& file, std::set<std::string>& taken) {
  std::string name = file.filename().string();
  for (int number = 2; !taken.insert(name).second; ++number) {
    name = fmt::format("{} ({}){}", file.stem().string(), number, file.extension().string());
  }
  return name;
}

}  // namespace

Result<std::string> TakePicturesAlong(std::string_view html, const fs::path& base, const fs::path& import_folder,
                                      const fs::path& target) {
  const fs::path root = (import_folder / "").lexically_normal().parent_path();
  const bool moves = !base.empty() && base.lexically_normal() != target.parent_path().lexically_normal();
  const std::string folder = target.stem().string() + "_files";
  std::vector<mime::PictureReference> references;
  std::vector<std::string> replacements;
  std::map<fs::path, std::string> names;
  std::set<std::string> taken;
  for (auto& reference : mime::FindLocalPictures(html)) {
    const fs::path file = (base / reference.path).lexically_normal();
    std::error_code failed;
    const bool is_lost = IsBelow(file, root) || (moves && fs::path(reference.path).is_relative());
    if (!is_lost || !fs::is_regular_file(file, failed)) continue;
    const auto [known, is_new] = names.try_emplace(file);
    if (is_new) {
      known->second = FreeName(file, taken);
      auto made = platform::EnsureFolder(target.parent_path() / folder);
      if (made) made = platform::CopyFile(file, target.parent_path() / folder / known->second);
      if (!made) return made.error();
    }
    replacements.push_back(AsAddress(folder + '/' + known->second));
    references.push_back(std::move(reference));
  }
  return references.empty() ? std::string(html) : mime::RewriteReferences(html, references, replacements);
}

}  // namespace quillcast::compose

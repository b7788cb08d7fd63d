#include "message/related_pictures.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <set>

#include "html/local_pictures.h"
#include "message/body_import.h"
#include "mime/media_type.h"
#include "platform/text.h"

namespace quillcast::message {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLookedAt = 512;
constexpr std::size_t kMostListed = 20;
constexpr std::size_t kMostNamed = 3;  // in a question

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

enum class Look { kPicture, kForeign, kTrouble };

struct Looked {
  Look look = Look::kTrouble;
  std::int32_t code = kBodyNotOpened;  // for kTrouble
  Picture picture;
};

// One document's pictures, each put where it belongs in `result`.
class Taking {
 public:
  Taking(const document::PicturePlaces& places, std::string_view content_id_suffix)
      : places_(places), folders_(places.RealFolders()), content_id_suffix_(content_id_suffix) {}

  // The file's Content-ID, or nothing for one that is not taken.
  std::string Take(const fs::path& file);
  RelatedPictures result;

 private:
  Looked LookInto(const fs::path& file) const;
  void AddForeign(const fs::path& file);

  const document::PicturePlaces& places_;
  const std::vector<fs::path> folders_;
  const std::string_view content_id_suffix_;
  std::set<fs::path> foreign_;
};

// Looks into it, or says why not. The file may have become another since its path was looked at; that is told as not
// opened.
Looked Taking::LookInto(const fs::path& file) const {
  if (const auto code = LookAtPath(file)) return {Look::kTrouble, code, {}};
  std::error_code failed;
  const fs::path real = fs::canonical(file, failed);
  auto fd = platform::OpenForReading(real);
  if (failed || !fd || !IsStill(fd->get(), real)) return {Look::kTrouble, kBodyNotOpened, {}};
  std::string start(kLookedAt, '\0');
  const auto got = platform::ReadSome(fd->get(), file, start.data(), start.size());
  struct stat status {};
  if (!got || ::fstat(fd->get(), &status) != 0) return {Look::kTrouble, kBodyNotRead, {}};
  const std::string_view type = mime::MediaTypeOf("", std::string_view(start).substr(0, *got));
  if (!type.starts_with("image/")) return {Look::kTrouble, kBodyNotParsed, {}};
  Picture picture{file,          {},           std::string(type), static_cast<std::uint64_t>(status.st_size),
                  status.st_dev, status.st_ino};
  return {places_.Hold(real, folders_) ? Look::kPicture : Look::kForeign, 0, std::move(picture)};
}

// By its real name, once, so that the person sees what a link would give away.
void Taking::AddForeign(const fs::path& file) {
  std::error_code gone;
  const fs::path real = fs::canonical(file, gone);
  if (foreign_.insert(real).second) result.foreign.push_back({real, places_.IsLeftOut(real)});
}

std::string Taking::Take(const fs::path& file) {
  auto [look, code, picture] = LookInto(file);
  switch (look) {
    case Look::kTrouble:
      result.troubles.push_back({file.string(), code});
      return {};
    case Look::kForeign:
      AddForeign(file);
      return {};
    case Look::kPicture:
      break;
  }
  picture.content_id = fmt::format("picture{}.{}", result.pictures.size() + 1, content_id_suffix_);
  result.pictures.push_back(std::move(picture));
  return result.pictures.back().content_id;
}

std::string FirstOf(const std::vector<fs::path>& files) {
  std::string names;
  for (std::size_t i = 0; i < files.size() && i < kMostNamed; ++i) {
    names += (i == 0 ? "" : ", ") + platform::Printable(files[i].string(), 300);
  }
  if (files.size() > kMostNamed) names += fmt::format(" and {} more", files.size() - kMostNamed);
  return names;
}

template <typename Item>
void AppendListed(std::vector<std::string>& lines, const std::vector<Item>& items, const char* rest) {
  for (std::size_t i = 0; i < items.size() && i < kMostListed; ++i) lines.push_back(Describe(items[i]));
  if (items.size() <= kMostListed) return;
  const auto more = static_cast<std::int64_t>(items.size() - kMostListed);
  lines.push_back(fmt::format(fmt::runtime(rest), platform::Counted(more, "more picture", "more pictures")));
}

}  // namespace

std::string Describe(const PictureTrouble& trouble) {
  const char* const what = trouble.code == kBodyNotOpened ? "is missing or may not be read"
                           : trouble.code == kBodyNotRead ? "cannot be read"
                           : trouble.code == kBodyNoFile  ? "is no file that can be taken along"
                                                          : "is no picture";
  return fmt::format("The picture {} {}.", platform::Printable(trouble.file, 300), what);
}

std::string Describe(const Picture& picture) {
  return fmt::format("The picture {} goes along ({}).", platform::Printable(picture.file.string(), 300),
                     platform::HumanSize(picture.size));
}

std::string Describe(const ForeignPicture& picture) {
  return fmt::format("The picture {} lies outside the document's folder and {}.",
                     platform::Printable(picture.file.string(), 300),
                     picture.left_out ? "is left out" : "does not go along unless you allow it");
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

RelatedPictures TakePictures(const document::MessageDocument& document, std::string_view content_id_suffix,
                             const platform::CancelToken* cancel) {
  const document::PicturePlaces places = document.picture_places.WithOwnFolder(document.base_folder);
  const fs::path base = document.base_folder.empty() ? fs::path("/") : document.base_folder;
  Taking taking(places, content_id_suffix);
  std::map<fs::path, std::string> content_ids;  // empty for a file that is not taken
  std::vector<html::PictureReference> taken;
  std::vector<std::string> replacements;
  for (auto& reference : html::FindLocalPictures(document.html)) {
    if (cancel != nullptr && cancel->Requested() != platform::Stop::kNone) break;
    const fs::path file = (base / reference.path).lexically_normal();
    const auto [known, is_new] = content_ids.try_emplace(file);
    if (is_new) known->second = taking.Take(file);
    if (known->second.empty()) continue;
    replacements.push_back("cid:" + known->second);
    taken.push_back(std::move(reference));
  }
  taking.result.html = html::RewriteReferences(document.html, taken, replacements);
  return std::move(taking.result);
}

Result<RelatedPictures> LookForPictures(const document::MessageDocument& document, const MessageOptions& options,
                                        const platform::CancelToken& cancel) {
  if (!TakesPictures(document, options)) return RelatedPictures();
  auto pictures = TakePictures(document, {}, &cancel);
  if (cancel.Requested() == platform::Stop::kNone) return pictures;
  return Error{Failure::kTryAgain, "The look at the pictures was stopped.", ""};
}

bool TakesPictures(const document::MessageDocument& document, const MessageOptions& options) {
  return document.format == document::Format::kHtml && !options.is_bare;
}

std::vector<std::string> ListPictures(const std::vector<Picture>& pictures,
                                      const std::vector<ForeignPicture>& foreign) {
  std::vector<std::string> lines;
  AppendListed(lines, pictures, "And {} that go along.");
  AppendListed(lines, foreign, "And {} from outside the document's folder.");
  return lines;
}

std::vector<fs::path> PicturesToAskFor(const std::vector<ForeignPicture>& foreign) {
  std::vector<fs::path> files;
  for (const auto& picture : foreign) {
    if (!picture.left_out) files.push_back(picture.file);
  }
  return files;
}

std::string NameForeign(const std::vector<fs::path>& files) {
  return fmt::format("The document names {} outside its own folder: {}.",
                     platform::Counted(std::ssize(files), "picture", "pictures"), FirstOf(files));
}

std::string PictureQuestion(const std::vector<fs::path>& files) {
  return NameForeign(files) + (files.size() == 1 ? " Shall it go along?" : " Shall they go along?");
}

}  // namespace quillcast::message

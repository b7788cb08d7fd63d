#include "run/frozen/frozen_files.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "message/body_import.h"
#include "message/related_pictures.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;
using message::FileTrouble;
using message::OpenedFile;

constexpr std::size_t kBlock = std::size_t{256} * 1024;

Result<void> ReadThrough(int fd, const fs::path& file) {
  if (::lseek(fd, 0, SEEK_SET) != 0) return platform::SystemError("read", file, errno);
  std::string block(kBlock, '\0');
  for (;;) {
    const auto got = platform::ReadSome(fd, file, block.data(), block.size());
    if (!got) return got.error();
    if (*got == 0) return {};
  }
}

// Under a name that no other file of the mailing has, and that the journal's errors are about: "list.csv (attachment
// 1)".
Result<Content> Keep(const OpenedFile& opened, const fs::path& file, std::string_view kind, std::size_t number,
                     RunJournal& journal) {
  if (const auto* trouble = std::get_if<FileTrouble>(&opened)) return Content(*trouble);
  const int fd = std::get<platform::UniqueFd>(opened).get();
  auto kept =
      journal.Keep(fmt::format("{} ({} {})", platform::Printable(file.filename().string(), 100), kind, number), fd);
  if (kept) return Content(*std::move(kept));
  // Whose failure it was: one of the journal ends the run before it begins, one of the file goes to its recipients.
  const auto read = ReadThrough(fd, file);
  if (!read) return Content(FileTrouble{smtp::ResultCode::kFileNotRead, read.error()});
  return kept.error();
}

// Notes what each reference led to.
class NotingFiles final : public message::FileSource {
 public:
  NotingFiles(const FileSource& behind, std::vector<FrozenPicture>& noted) : behind_(behind), noted_(noted) {}

  OpenedFile OpenAttachment(const fs::path& file) const override { return behind_.OpenAttachment(file); }
  OpenedFile OpenPicture(const message::Picture& picture) const override { return behind_.OpenPicture(picture); }
  message::FoundPicture FindPicture(const fs::path& file) const override {
    auto found = behind_.FindPicture(file);
    noted_.push_back({file.string(), found, {}});
    return found;
  }

 private:
  const FileSource& behind_;
  std::vector<FrozenPicture>& noted_;
};

// By which it is found later, and by another program: "/dev/stdin" is what that leads to now.
fs::path Lasting(const fs::path& path) {
  const fs::path file = fs::absolute(path, IgnoreErrors());
  const std::string text = file.string();
  return text.starts_with("/dev/") || text.starts_with("/proc/") ? fs::canonical(file, IgnoreErrors()) : file;
}

// A disk that is full, or cannot be read for now, says so itself: nothing is lost.
Error NotThere(const std::string& file, const Error& error) {
  if (error.failure == Failure::kIo) return error;
  return {error.failure,
          Say("What the run took of {} when it began cannot be read any more. {}", platform::Printable(file, 300),
              AsSentence(error)),
          "Begin a new run."};
}

}  // namespace

Result<FrozenFiles> KeepFiles(const document::MessageDocument& document, const message::MessageOptions& options,
                              RunJournal& journal) {
  FrozenFiles files;
  const message::DocumentFiles lying(document);
  if (message::TakesPictures(document, options)) {
    message::TakePictures(document, {}, NotingFiles(lying, files.pictures));
  }
  std::size_t number = 0;
  for (auto& picture : files.pictures) {
    if (!IsTaken(picture)) continue;
    const auto& found = std::get<message::Picture>(picture.found);
    auto content = Keep(lying.OpenPicture(found), picture.file, "picture", ++number, journal);
    if (!content) return content.error();
    picture.content = *std::move(content);
  }
  number = 0;
  for (const auto& path : document.attachments.paths()) {
    auto content = Keep(lying.OpenAttachment(path), path, "attachment", ++number, journal);
    if (!content) return content.error();
    files.attachments.push_back({path, *std::move(content)});
  }
  number = 0;
  for (const auto& path : document.sources) {
    const fs::path file = Lasting(path);
    if (!fs::is_regular_file(file, IgnoreErrors())) continue;  // a pipe is read once
    if (std::ranges::find(files.sources, file.string(), &FrozenFile::file) != files.sources.end()) continue;
    auto content = Keep(lying.OpenAttachment(file), file, "letter", ++number, journal);
    if (!content) return content.error();
    files.sources.push_back({file.string(), *std::move(content)});
  }
  return files;
}

std::vector<KeptFile> ContentsOf(const FrozenFiles& files) {
  std::vector<KeptFile> kept;
  const auto add = [&](const Content& content) {
    if (const auto* file = std::get_if<KeptFile>(&content)) kept.push_back(*file);
  };
  for (const auto& picture : files.pictures) {
    if (IsTaken(picture)) add(picture.content);
  }
  for (const auto* each : {&files.attachments, &files.sources}) {
    for (const auto& file : *each) add(file.content);
  }
  return kept;
}

KeptFiles::KeptFiles(FrozenFiles files, RunJournal& journal) : files_(std::move(files)), journal_(&journal) {
  for (std::size_t i = 0; i < files_.attachments.size(); ++i) attachments_.emplace(files_.attachments[i].file, i);
  for (std::size_t i = 0; i < files_.pictures.size(); ++i) pictures_.emplace(files_.pictures[i].file, i);
}

// Each is opened once, and closed: there may be more of them than a process may have descriptors.
Result<KeptFiles> KeptFiles::Open(FrozenFiles files, RunJournal& journal) {
  KeptFiles kept(std::move(files), journal);
  for (const auto& attachment : kept.files_.attachments) {
    const auto* content = std::get_if<KeptFile>(&attachment.content);
    const auto fd = content != nullptr ? journal.Open(*content) : Result<platform::UniqueFd>(platform::UniqueFd());
    if (!fd) return NotThere(attachment.file, fd.error());
  }
  for (auto& picture : kept.files_.pictures) {
    const auto* content = std::get_if<KeptFile>(&picture.content);
    if (!IsTaken(picture) || content == nullptr) continue;
    const auto fd = journal.Open(*content);
    if (!fd) return NotThere(picture.file, fd.error());
    const auto size = platform::FileSize(fd->get(), picture.file);
    if (!size) return NotThere(picture.file, size.error());
    std::get<message::Picture>(picture.found).size = *size;
  }
  return kept;
}

OpenedFile KeptFiles::Open(const Content& content) const {
  if (const auto* trouble = std::get_if<FileTrouble>(&content)) return *trouble;
  auto fd = journal_->Open(std::get<KeptFile>(content));
  if (fd) return *std::move(fd);
  return FileTrouble{smtp::ResultCode::kFileNotRead, fd.error()};
}

OpenedFile KeptFiles::OpenAttachment(const fs::path& file) const {
  const auto place = attachments_.find(file.string());
  if (place != attachments_.end()) return Open(files_.attachments[place->second].content);
  return FileTrouble{smtp::ResultCode::kFileNotOpened, platform::SystemError("read", file, ENOENT)};
}

message::FoundPicture KeptFiles::FindPicture(const fs::path& file) const {
  const auto place = pictures_.find(file.string());
  if (place != pictures_.end()) return files_.pictures[place->second].found;
  return message::PictureTrouble{file.string(), message::kBodyNotOpened};
}

OpenedFile KeptFiles::OpenPicture(const message::Picture& picture) const {
  const auto place = pictures_.find(picture.file.string());
  if (place != pictures_.end()) return Open(files_.pictures[place->second].content);
  return FileTrouble{smtp::ResultCode::kFileNotOpened, platform::SystemError("read", picture.file, ENOENT)};
}

}  // namespace quillcast::run

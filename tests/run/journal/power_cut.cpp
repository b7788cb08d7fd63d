#include "run/journal/power_cut.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "support/temporary_folder.h"

namespace quillcast::test {
namespace {

std::mutex watch_mutex;
PowerCut* watch = nullptr;

std::string Content(int fd) {
  struct stat status {};
  if (::fstat(fd, &status) != 0) return {};
  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  const ssize_t got = ::pread(fd, content.data(), content.size(), 0);
  content.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  return content;
}

void Put(const std::filesystem::path& folder, const std::map<std::string, std::string>& files) {
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  for (const auto& [name, content] : files) std::ofstream(folder / name, std::ios::binary) << content;
}

}  // namespace

PowerCut::PowerCut(std::filesystem::path folder) : folder_(std::move(folder)) {
  const std::scoped_lock lock(watch_mutex);
  watch = this;
}

PowerCut::~PowerCut() {
  const std::scoped_lock lock(watch_mutex);
  watch = nullptr;
}

int PowerCut::Sync(int fd) {
  const std::scoped_lock lock(watch_mutex);
  return watch == nullptr ? 0 : watch->Note(fd);
}

int PowerCut::Note(int fd) {
  std::array<char, 4096> name{};
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  if (::readlink(link.c_str(), name.data(), name.size() - 1) < 0) return 0;
  const std::filesystem::path file = name.data();
  std::unique_lock lock(mutex_);
  let_go_.wait(lock, [this] { return !is_held_; });
  // Which files there are is known by their folder.
  if (file == folder_) std::erase_if(durable_, [&](const auto& each) { return !exists(folder_ / each.first); });
  if (file.parent_path() != folder_) return 0;
  if (is_broken_) {
    errno = EIO;
    return -1;
  }
  durable_[file.filename()] = Content(fd);
  return 0;
}

void PowerCut::Break() {
  const std::scoped_lock lock(mutex_);
  is_broken_ = true;
}

void PowerCut::Hold() {
  const std::scoped_lock lock(mutex_);
  is_held_ = true;
}

void PowerCut::LetGo() {
  {
    const std::scoped_lock lock(mutex_);
    is_held_ = false;
  }
  let_go_.notify_all();
}

void PowerCut::Leave(const std::filesystem::path& folder) {
  const std::scoped_lock lock(mutex_);
  Put(folder, durable_);
}

void PowerCut::LeaveTorn(const std::filesystem::path& folder, std::mt19937& random) {
  constexpr std::size_t kSector = 512;
  const std::scoped_lock lock(mutex_);
  auto files = durable_;
  for (auto& [name, content] : files) {
    const std::string now = ReadAll(folder_ / name);
    if (now.size() > content.size() && random() % 2 == 0) content.resize(now.size());
    for (std::size_t at = 0; at < std::min(content.size(), now.size()); at += kSector) {
      if (random() % 2 == 0) content.replace(at, kSector, now, at, kSector);
    }
  }
  Put(folder, files);
}

}  // namespace quillcast::test

// In the place of the system's: SQLite and this program find these first.
extern "C" int fdatasync(int fd) { return quillcast::test::PowerCut::Sync(fd); }
extern "C" int fsync(int fd) { return quillcast::test::PowerCut::Sync(fd); }

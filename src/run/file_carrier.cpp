#include "run/file_carrier.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <utility>

#include "mail_file/chosen_folder.h"
#include "mail_file/safe_part_name.h"
#include "platform/file.h"
#include "run/mbox_lines.h"

namespace quillcast::run {
namespace {

namespace fs = std::filesystem;

// Calls `take` with each piece of the message.
Result<void> EachPiece(smtp::MessageSource& message, const std::function<Result<void>(std::string_view)>& take) {
  for (;;) {
    const auto piece = message.Next();
    if (!piece) return piece.error();
    if (piece->empty()) return {};
    if (auto taken = take(*piece); !taken) return taken;
  }
}

// A local part may hold what parts folders; the name of a part is only what stands behind that.
std::string FileNameFor(const smtp::Job& letter) {
  std::string address = letter.envelope.recipient.text();
  std::replace_if(
      address.begin(), address.end(), [](char c) { return c == '/' || c == '\\'; }, '_');
  return mail_file::SafePartName(fmt::format("{:06} {}.eml", letter.position, address));
}

// "From ada@example.org Thu Nov 26 22:14:59 2026", the time in UTC.
std::string FromLine(const smtp::Address& sender, std::time_t now) {
  std::tm utc{};
  ::gmtime_r(&now, &utc);
  std::array<char, 32> time{};  // asctime_r writes 26
  ::asctime_r(&utc, time.data());
  return fmt::format("From {} {}", sender.text(), time.data());
}

class Mbox {
 public:
  Mbox(platform::UniqueFd fd, fs::path file, const platform::Clock& clock)
      : fd_(std::move(fd)), file_(std::move(file)), clock_(clock) {}

  Result<void> Keep(const smtp::Job& letter) {
    const auto written = Write(letter);
    if (written) {
      size_ += std::exchange(letter_size_, 0);
      return {};
    }
    IgnoreErrors(::ftruncate(fd_.get(), size_));  // the failure that is told came before
    return written.error();
  }

 private:
  Result<void> Write(const smtp::Job& letter) {
    MboxLines lines;
    letter_size_ = 0;
    block_ = FromLine(letter.envelope.sender, std::chrono::system_clock::to_time_t(clock_.Now()));
    auto written = EachPiece(*letter.message, [&](std::string_view piece) {
      lines.Append(piece, block_);
      return block_.size() < platform::kFileBlock ? Result<void>() : Flush();
    });
    if (!written) return written;
    lines.End(block_);
    return Flush();
  }
  Result<void> Flush() {
    auto written = platform::WriteAll(fd_.get(), file_, block_);
    letter_size_ += std::ssize(block_);
    block_.clear();
    return written;
  }

  platform::UniqueFd fd_;
  fs::path file_;
  const platform::Clock& clock_;
  off_t size_ = 0;         // of the letters that are in it whole
  off_t letter_size_ = 0;  // of what was written of the next
  std::string block_;
};

}  // namespace

Result<KeepLetter> IntoFolder(const fs::path& folder, const platform::OwnFiles& own) {
  auto opened = mail_file::ChosenFolder::OpenOrMake(folder, own);
  if (!opened) return opened.error();
  const auto chosen = std::make_shared<mail_file::ChosenFolder>(std::move(*opened));
  return KeepLetter([chosen](const smtp::Job& letter) {
    return chosen->WriteAs(FileNameFor(letter), [&letter](int fd, const fs::path& file) {
      return EachPiece(*letter.message, [&](std::string_view piece) { return platform::WriteAll(fd, file, piece); });
    });
  });
}

Result<KeepLetter> IntoMbox(const fs::path& file, const platform::OwnFiles& own, const platform::Clock& clock) {
  if (auto other = platform::CheckIsNotOwn(file, own); !other) return other.error();
  // O_EXCL takes a link for what exists.
  platform::UniqueFd fd(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!fd && errno == EEXIST) return mail_file::IsThereAlready(file, "Name another file.");
  if (!fd) return platform::SystemError("create", file, errno);
  const auto mbox = std::make_shared<Mbox>(std::move(fd), file, clock);
  return KeepLetter([mbox](const smtp::Job& letter) { return mbox->Keep(letter); });
}

void FileCarrier::Carry(smtp::JobSource& letters) {
  while (!trouble_ && cancel_.Requested() == platform::Stop::kNone) {
    smtp::Job* letter = letters.NextJob();
    if (letter == nullptr) return;
    const auto kept = keep_(*letter);
    if (!kept) trouble_ = kept.error();
    const smtp::Outcome outcome =
        kept ? smtp::Outcome{smtp::State::kSent, smtp::ResultCode::kSuccess, {}, {}}
             : smtp::Outcome{smtp::State::kFailed, smtp::ResultCode::kException, {}, Describe(kept.error())};
    letters.Decided(*letter, outcome);
    letters.Finished(*letter, outcome);
    if (!letters.CaughtUp()) break;
  }
}

}  // namespace quillcast::run

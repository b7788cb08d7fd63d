#include "platform/session_log.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "platform/text.h"

namespace quillcast::platform {
namespace {

constexpr std::size_t kLongestLine = 2000;
constexpr std::string_view kEndsAnAddress = " \t\r\n<>(),;:'\"[]";

// Where the address round the "@" begins; a quoted local part may hold anything.
std::size_t BeginOf(std::string_view text, std::size_t at) {
  if (at > 0 && text[at - 1] == '"') {
    const auto quote = at < 2 ? std::string_view::npos : text.rfind('"', at - 2);
    return quote == std::string_view::npos ? at - 1 : quote;
  }
  const auto before = text.substr(0, at).find_last_of(kEndsAnAddress);
  return before == std::string_view::npos ? 0 : before + 1;
}

}  // namespace

std::string WithoutAddresses(std::string_view text) {
  std::string out;
  for (auto at = text.find('@'); at != std::string_view::npos; at = text.find('@')) {
    out.append(text.substr(0, BeginOf(text, at))).append("(an address)");
    const auto end = text.find_first_of(kEndsAnAddress, at);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end);
  }
  return out.append(text);
}

SessionLog::SessionLog(std::filesystem::path folder, const Clock& clock) : folder_(std::move(folder)), clock_(clock) {
  OnPassedOver([this](const Error& error) { Write(InOneLine(error)); });
}

SessionLog::~SessionLog() { OnPassedOver({}); }

// A file of our own making, never one that somebody put there.
bool SessionLog::Begin() {
  std::error_code none_there;
  std::filesystem::rename(folder_ / "Session.log", folder_ / "Session.before.log", none_there);
  auto made = FileWriter::CreateNew(folder_ / "Session.log");
  if (!made) return false;
  writer_ = std::move(*made);
  size_ = 0;
  return true;
}

void SessionLog::Write(std::string_view text) {
  const std::lock_guard guard(lock_);
  const std::string shown = Printable(WithoutAddresses(text), kLongestLine);
  if (shown == last_) return;
  last_ = shown;
  const std::string line = fmt::format("{:%Y-%m-%d %H:%M:%S} {}\n", clock_.Local(clock_.Now()), shown);
  if ((!writer_ || size_ + line.size() > kLargest) && !Begin()) return;
  size_ += line.size();
  // There is nobody left to tell of a failure here.
  if (writer_->Write(line) && writer_->Flush()) return;
  writer_.reset();
}

}  // namespace quillcast::platform

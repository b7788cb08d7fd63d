#include "cli/output.h"

#include <fmt/format.h>
#include <stdio_ext.h>
#include <unistd.h>

#include "account/import/account_import.h"
#include "platform/text.h"
#include "recipients/import/kept_mappings.h"
#include "recipients/store_rows.h"

namespace quillcast::cli {
namespace {

constexpr std::size_t kLongestLine = 20'000;
constexpr auto kProgressPause = std::chrono::milliseconds(100);

// The core's words are those of a window too; here the commands are named that do it.
Error AtTerminal(Error error) {
  if (error.remedy == Sentence(recipients::kNoSuchGroupRemedy))
    error.remedy = "`quillcast group list` shows the groups; `quillcast group new` makes one.";
  if (error.remedy == Sentence(recipients::kNoSuchMappingRemedy))
    error.remedy = "Take one of those that are kept: `quillcast import --list-mappings` names them.";
  if (error.remedy == Sentence(recipients::kDamagedMappingsRemedy))
    error.remedy = "`quillcast import --forget-mappings` forgets all of them; keep them anew then.";
  if (error.remedy == Sentence(account::kNoSuchFoundAccountRemedy))
    error.remedy = "`quillcast account import` lists those that were found; give the number of one.";
  return error;
}

// As many whole lines as fit, or what fits of a line that is longer.
std::string_view WholeLines(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  const auto end = text.rfind('\n', most - 1);
  return text.substr(0, end == std::string_view::npos ? most : end + 1);
}

}  // namespace

std::string ForTerminal(std::string_view text) {
  const std::string lines = platform::ReplaceAll(text, "\r\n", "\n");
  std::string out;
  std::string_view between;
  for (const auto line : platform::Split(lines, '\n')) {
    out += between;
    out += platform::Printable(line, kLongestLine);
    between = "\n";
  }
  return out;
}

void Print(std::FILE* stream, std::string_view text) {
  const std::size_t held_at_most = ::__fbufsize(stream);
  const std::size_t most = held_at_most <= 1 ? text.size() : held_at_most;  // 1 or 0: nothing is held
  while (!text.empty()) {
    const std::string_view piece = WholeLines(text, most);
    if (::__fpending(stream) + piece.size() > most) IgnoreErrors(std::fflush(stream));
    IgnoreErrors(std::fwrite(piece.data(), 1, piece.size(), stream));  // std::ferror is asked at the end
    text.remove_prefix(piece.size());
  }
}

void Output::Line(std::string_view text) const {
  if (!json) Print(stdout, ForTerminal(text) + "\n");
}

void Output::Html(std::string_view html) const {
  if (!json) Print(stdout, ::isatty(STDOUT_FILENO) != 0 ? ForTerminal(html) : std::string(html));
}

void Output::Columns(const std::vector<std::string>& texts) const {
  if (json) return;
  std::string line;
  for (const auto& text : texts) line += (&text == texts.data() ? "" : "\t") + platform::Printable(text, kLongestLine);
  Print(stdout, line + "\n");
}

void Output::Object(const nlohmann::ordered_json& object) const {
  if (!json) return;
  const std::string text = object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  Print(stdout, platform::PrintableJson(text) + "\n");
}

void Output::Note(std::string_view text) const {
  if (!quiet) Print(stderr, ForTerminal(text) + "\n");
}

int Output::Fail(const Error& error) const {
  Print(stderr, fmt::format("quillcast: {}\n", ForTerminal(Describe(AtTerminal(error)))));
  return ExitCode(error.failure);
}

int Output::Complain(std::string_view text) const {
  Print(stderr, fmt::format("quillcast: {}\n", ForTerminal(text)));
  return ExitCode(Failure::kUsage);
}

void Output::Progress(std::string_view text) {
  static const bool is_terminal = ::isatty(STDERR_FILENO) != 0;  // asked once, not for each recipient
  if (quiet || json || !is_terminal) return;
  const auto now = std::chrono::steady_clock::now();
  if (progress_shown_ && now - last_progress_ < kProgressPause) return;
  last_progress_ = now;
  progress_shown_ = true;
  Print(stderr, fmt::format("\r{}\x1b[K", ForTerminal(text)));
  std::fflush(stderr);
}

void Output::EndProgress() {
  if (progress_shown_) Print(stderr, "\r\x1b[K");
  progress_shown_ = false;
}

}  // namespace quillcast::cli

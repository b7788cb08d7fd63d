#include "mail_file/boundary.h"

#include <algorithm>

#include "mail_file/message_lines.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kLongestBoundary = 200;  // bytes; the RFC allows 70
constexpr std::size_t kMostLookedAt = std::size_t{1024} * 1024;

// What a line could be the delimiter of; "-- " begins a signature.
std::string CandidateOf(std::string_view line) {
  line = line.substr(0, line.find_last_not_of(" \t") + 1);
  const bool fits = line.starts_with("--") && line.size() > 2 && line.size() <= kLongestBoundary && line[2] != ' ';
  return fits ? std::string(line.substr(2)) : std::string();
}

}  // namespace

DelimiterKind DelimiterOf(std::string_view line, std::string_view boundary) {
  if (boundary.empty() || !line.starts_with("--") || !line.substr(2).starts_with(boundary)) return DelimiterKind::kNone;
  std::string_view rest = line.substr(2 + boundary.size());
  const bool closes = rest.starts_with("--");
  if (closes) rest.remove_prefix(2);
  if (rest.find_first_not_of(" \t") != std::string_view::npos) return DelimiterKind::kNone;
  return closes ? DelimiterKind::kClose : DelimiterKind::kOpen;
}

Result<std::optional<std::string>> GuessBoundary(const MessageFile& file, ByteRange content, std::string_view declared,
                                                 std::size_t& budget) {
  const auto most = static_cast<std::uint64_t>(std::min(budget, kMostLookedAt));
  MessageLines lines(file, {content.begin, content.begin + std::min(most, content.size())});
  std::string candidate;
  std::string found;
  MessageLine line;
  for (;;) {
    const auto more = lines.Next(line);
    if (!more) return more.error();
    if (!*more) break;
    if (DelimiterOf(line.text, declared) != DelimiterKind::kNone) {
      found = declared;
      break;
    }
    const bool is_field = platform::StartsWithIgnoringAsciiCase(line.text, "Content-");
    if (found.empty() && is_field && !candidate.empty()) found = candidate;
    if (!found.empty() && declared.empty()) break;
    candidate = CandidateOf(line.text);
  }
  budget -= std::min(budget, static_cast<std::size_t>(lines.position() - content.begin));
  return found.empty() ? std::optional<std::string>() : found;
}

}  // namespace quillcast::mail_file

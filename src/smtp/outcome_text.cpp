#include "smtp/outcome_text.h"

#include <fmt/format.h>

#include "platform/text.h"
#include "smtp/result_code.h"

namespace quillcast::smtp {

std::string ReplyText(const ServerReply& reply) {
  if (reply.code == 0) return {};
  const std::string enhanced = reply.enhanced.empty() ? "" : reply.enhanced + " ";
  return fmt::format("{} {}{}", reply.code, enhanced,
                     platform::Printable(platform::ReplaceAll(reply.text, "\n", " / ")));
}

std::string ReplyAndReason(const ServerReply& reply, std::string_view reason) {
  std::string text = ReplyText(reply);
  if (reason.empty()) return text;
  const bool is_ended = text.empty() || std::string_view(".!?:;").find(text.back()) != std::string_view::npos;
  return text + (is_ended ? "" : ".") + (text.empty() ? "" : " ") + std::string(reason);
}

std::string WhyText(const Outcome& outcome) {
  const std::string known = ReplyAndReason(outcome.reply, outcome.reason);
  std::string general = ResultText(static_cast<std::int32_t>(outcome.code));
  return known.empty() ? general : fmt::format("{} ({})", known, general);
}

std::string OutcomeText(const Outcome& outcome) { return fmt::format("{}. {}", Name(outcome.state), WhyText(outcome)); }

}  // namespace quillcast::smtp

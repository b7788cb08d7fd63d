#include "smtp/outcome_text.h"

#include <fmt/format.h>

#include "platform/text.h"
#include "smtp/result_code.h"

namespace quillcast::smtp {
namespace {

// What the server and we have to say beside the code, each with a blank before it.
std::string Details(const Outcome& outcome) {
  const std::string both = ReplyAndReason(outcome.reply, outcome.reason);
  if (both.empty()) return {};
  return (outcome.reply.code == 0 ? " " : " The server said: ") + both;
}

}  // namespace

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
  return ResultText(static_cast<std::int32_t>(outcome.code)) + Details(outcome);
}

std::string ReplyFirst(const Outcome& outcome) {
  if (outcome.reply.code == 0) return WhyText(outcome);
  return fmt::format("{} ({}){}{}", ReplyText(outcome.reply), ResultText(static_cast<std::int32_t>(outcome.code)),
                     outcome.reason.empty() ? "" : " ", outcome.reason);
}

std::string OutcomeText(const Outcome& outcome) {
  return fmt::format("{} ({}){}", Name(outcome.state), ResultText(static_cast<std::int32_t>(outcome.code)),
                     Details(outcome));
}

}  // namespace quillcast::smtp

#include "smtp/outcome_text.h"

#include <fmt/format.h>

#include "platform/text.h"
#include "smtp/result_code.h"

namespace quillcast::smtp {
namespace {

// What the server and we have to say beside the code, each with a blank before it.
std::string Details(const Outcome& outcome) {
  std::string text;
  if (outcome.reply.code != 0) text += fmt::format(" The server said: {}", ReplyText(outcome.reply));
  if (!outcome.reason.empty()) text += " " + outcome.reason;
  return text;
}

}  // namespace

std::string ReplyText(const ServerReply& reply) {
  if (reply.code == 0) return {};
  const std::string enhanced = reply.enhanced.empty() ? "" : reply.enhanced + " ";
  return fmt::format("{} {}{}", reply.code, enhanced,
                     platform::Printable(platform::ReplaceAll(reply.text, "\n", " / ")));
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

#include "mail_file/body_texts.h"

#include <algorithm>

#include "html/html_to_text.h"
#include "mail_file/body_order.h"
#include "mail_file/body_part.h"
#include "platform/text.h"

namespace quillcast::mail_file {

std::vector<const Part*> BodyParts(const MailMessage& message, std::string_view type) {
  auto bodies = ReadingOrder(message, type);
  std::erase_if(bodies, [](const Part* part) { return !IsTextOrPage(*part); });
  return bodies;
}

Result<std::string> BodyAsText(const MailMessage& message) {
  const auto bodies = BodyParts(message, "text/plain");
  if (auto why = WhyUnread(message, bodies)) return *std::move(why);
  std::string out;
  for (const Part* part : bodies) {
    if (!part->refused.empty()) continue;
    auto text = message.TextOf(*part);
    if (!text) return text;
    if (part->type == "text/html") *text = platform::WithLineEnds(html::HtmlToText(*text));
    if (!out.empty() && !out.ends_with("\r\n")) out += "\r\n";
    out += *text;
  }
  return out;
}

std::optional<Error> WhyUnread(const MailMessage& message, const std::vector<const Part*>& bodies) {
  const auto refused = std::ranges::find_if(bodies, [](const Part* part) { return !part->refused.empty(); });
  if (refused == bodies.end()) return {};
  ShownParts shown(message);
  if (std::ranges::any_of(bodies, [&](const Part* part) { return shown.Shows(*part); })) return {};
  return message.Open(**refused).error();
}

}  // namespace quillcast::mail_file

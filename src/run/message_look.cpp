#include "run/message_look.h"

#include <utility>

#include "message/related_pictures.h"
#include "platform/text.h"

namespace quillcast::run {

std::vector<Sentence> MessageLook::Troubles() const {
  std::vector<Sentence> troubles;
  if (no_message) troubles.push_back(*no_message);
  if (before) troubles.push_back(*before);
  troubles.insert(troubles.end(), findings.begin(), findings.end());
  if (domain) troubles.push_back(*domain);
  return troubles;
}

MessageLook LookOf(const message::MessageTemplate& message, const PreFlight& found,
                   const std::optional<Sentence>& notices) {
  MessageLook look;
  if (const auto& trouble = message.trouble()) look.no_message = AsSentence(trouble->error);
  look.along = message::ListPictures(message.pictures(), {});
  look.findings = message::ListPictures({}, message.foreign_pictures());
  for (auto& line : Describe(found)) look.findings.push_back(std::move(line));
  if (notices) look.findings.push_back(*notices);
  if (found.largest_message > 0) {
    look.size = Say("A message is about {}.", platform::HumanSize(found.largest_message));
  }
  return look;
}

}  // namespace quillcast::run

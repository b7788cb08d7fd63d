// What a look over a message and its whole group found, in sentences for whoever is about to send it.
#pragma once

#include <optional>
#include <vector>

#include "message/message_template.h"
#include "platform/sentence.h"
#include "run/pre_flight.h"

namespace quillcast::run {

struct MessageLook {
  std::optional<Sentence> no_message;  // why none can be made
  std::vector<Sentence> findings;      // what the person may not have meant
  std::optional<Sentence> domain;      // what is to be mended in the sender's domain, where that was checked
  std::optional<Sentence> before;      // that the group had this message already
  std::vector<Sentence> along;         // the pictures that go along
  Sentence size;                       // of a message; empty where none can be made

  // All that may be wrong, the worst first.
  std::vector<Sentence> Troubles() const;
};

// `notices`: what the server says about delivery notifications, where it was asked and they will not come.
MessageLook LookOf(const message::MessageTemplate& message, const PreFlight& found,
                   const std::optional<Sentence>& notices);

}  // namespace quillcast::run

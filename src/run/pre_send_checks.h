// What must hold before a run may start; asked and told through the Prompts port.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/prompts.h"
#include "platform/result.h"

namespace quillcast::run {

// What the checks look at.
struct SendingFacts {
  bool account_filled_in = false;  // none of Name, Email, Server and Port is empty
  std::vector<std::string> groups;
  std::string group;            // the chosen one, empty for none
  std::int64_t recipients = 0;  // in the chosen group
  std::string subject;
  std::string body_text;  // the body as plain text
  bool group_is_there = false;
};

// What the person has to see to; where that is done is known to each face.
enum class SendControl : std::uint8_t { kAccount, kGroup, kSubject, kBody };

// Why no run starts, which the person was told, or said.
struct Refusal {
  SendControl control;
  Failure failure;  // kNotPermitted for an answer
  bool operator==(const Refusal& other) const = default;
};

// The checks in their order: the first that fails, or whose question is answered with No. Nothing when the run may
// start.
std::optional<Refusal> CheckBeforeSending(const SendingFacts& facts, platform::Prompts& prompts);

}  // namespace quillcast::run

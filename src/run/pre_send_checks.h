// What must hold before a run may start; asked and told through the Prompts port.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
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

// The checks in their order; the first that fails, or whose question is answered with No, gives the control that gets
// the focus. Nothing when the run may start.
std::optional<std::string> CheckBeforeSending(const SendingFacts& facts, platform::Prompts& prompts);

}  // namespace quillcast::run

// A message that a link asks to begin: "mailto:" (RFC 6068).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::document {

// One line of subject and a body of lines that end in "\n", both safe to show.
struct MailtoMessage {
  std::string subject;
  std::string body;
  // What it also asks for, safe to show: its recipients, since a run goes to a group, and fields that a link must not
  // set for anybody, such as files to attach; each once, and of many the first six and "...".
  std::vector<std::string> left_out;
};

// Nothing for an address of another kind, or one with a NUL in it.
std::optional<MailtoMessage> ReadMailto(std::string_view address);

}  // namespace quillcast::document

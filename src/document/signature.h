// The person's one signature: a whole HTML document that new messages start with while it is on. What the main window
// does with it is profile::SignatureOfNewDocument.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/prompts.h"
#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::document {

// What the dialog shows where none was saved: an empty paragraph, a line, and a notice of confidentiality.
inline constexpr std::string_view kBuiltInSignature =
    R"(<html><head><title></title><style>a:hover { color: red }</style></head>)"
    R"(<body link="#0000FF" vlink="#0000FF" alink="#0000FF"><p>&nbsp;</p><hr>)"
    R"(<p><font face="Verdana" size="2">Information contained in this email is confidential information. )"
    R"(If you received this message by mistake then please notify the sender immediately and delete all copies of )"
    R"(the email and its associated files from your system.</font></p></body></html>)";

// What the dialog shows.
struct Signature {
  bool is_on = false;
  std::string html = std::string(kBuiltInSignature);
};

// With the defaults where nothing is stored. A status counts as on when its number is 1.
Result<Signature> LoadSignature(const profile::SettingsStore& settings);

// Both or none.
Result<void> SaveSignature(const Signature& signature, profile::SettingsStore& settings);

inline constexpr const char* kResetSignatureQuestion =
    "You are just about to wipe out your signature settings.\r\nAre you sure you want to proceed?";

// Asks, and deletes what is stored. False when the person says no.
Result<bool> ResetSignature(profile::SettingsStore& settings, platform::Prompts& prompts);

// What readers may make of it that the person may not have meant: scripts, its size, no HTML at all.
std::vector<Sentence> SignatureNotes(std::string_view html);

}  // namespace quillcast::document

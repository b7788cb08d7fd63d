// What a support request consists of, to be read before it goes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/result.h"
#include "platform/secret.h"
#include "profile/folders.h"
#include "profile/settings_store.h"
#include "smtp/address.h"
#include "support/support_request.h"
#include "support/system_facts.h"

namespace quillcast::support {

// The report's name among the attachments.
inline constexpr const char* kReportName = "System Report.txt";

struct RequestContents {
  smtp::Address to;
  std::string from;  // "Ada <ada@example.org>"
  std::string subject;
  std::string body;                          // lines end in CRLF
  std::string report;                        // the same; always the first attachment
  std::vector<std::filesystem::path> files;  // the others: the person's own, then those of the ticked boxes
};

// `password` is the account's where it is kept elsewhere than in the settings, and known. Fails where the settings
// cannot be read, with kNoInput where a box asks for what is not there, and with
// kNotPermitted where the attachment is the settings file. Whether the attachment is there is seen when
// it is read.
Result<RequestContents> ContentsOf(const SupportRequest& request, const SystemFacts& facts, const smtp::Address& to,
                                   const profile::Folders& folders, const profile::SettingsStore& settings,
                                   const platform::Secret& password = {});

// All of it as one text, with the names and sizes of the files in place of their content.
std::string AsText(const RequestContents& contents);

}  // namespace quillcast::support

// The files of mailings by their contents, each content once for however many mailings it goes with.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/sqlite.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// The SHA-256 of what is behind an open file, from its beginning, in hexadecimal digits.
Result<std::string> HashOf(int fd, const std::filesystem::path& name);

// Keeps it unless it is kept already, in a transaction of its own.
Result<std::string> KeepContent(platform::Database& database, int fd, const std::string& name,
                                std::chrono::sys_seconds now);
// Writes a content to an open file, from where that stands. kNoInput for one that is not kept.
Result<void> WriteContent(platform::Database& database, const std::string& content, int fd);

// These in the transaction that is open.
Result<void> AddFiles(platform::Database& database, MailingId mailing, const std::vector<KeptFile>& files);
Result<std::vector<KeptFile>> FilesOf(platform::Database& database, MailingId mailing);
// Those that no other mailing has go with it.
Result<void> ForgetFiles(platform::Database& database, MailingId mailing);
// Contents that were kept for a mailing that was never begun, some time ago.
Result<void> ForgetUnused(platform::Database& database, std::chrono::sys_seconds now);

}  // namespace quillcast::run

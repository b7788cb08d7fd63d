// The message that is being composed as one message file: as a run would send it, but to nobody, and with its merge
// tags left as they are. Nothing is sent.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "document/message_document.h"
#include "message/message_options.h"
#include "platform/complaint.h"
#include "platform/sentence.h"
#include "run/run_place.h"

namespace quillcast::run {

struct ExportTarget {
  std::filesystem::path file;
  bool is_draft = false;  // "X-Unsent: 1", so that mail readers open it to be written on, not to be read
};

enum class MessageExportControl : std::uint8_t { kFile };
std::optional<Complaint<MessageExportControl>> CheckMessageExport(const ExportTarget& target);

struct Exported {
  std::uint64_t octets = 0;
  std::vector<Sentence> notes;  // about pictures that could not be taken along, and those that go along
};

// Puts the file in its place when it is whole. After an error or a cancel (kTryAgain) what stood there before still
// does; so does a locked file, and what the program keeps itself.
Result<Exported> ExportMessage(const document::MessageDocument& document, message::MessageOptions options,
                               const ExportTarget& target, const RunPlace& place);

}  // namespace quillcast::run

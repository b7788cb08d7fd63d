// The preview of the message as a run would send it, with its merge tags left as they are.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "document/message_document.h"
#include "message/message_options.h"
#include "platform/sentence.h"
#include "run/run_place.h"

namespace quillcast::run {

struct Preview {
  std::filesystem::path file;   // Preview.eml in the temporary folder; for HTML, Preview.htm stands beside it
  std::vector<Sentence> notes;  // about pictures that could not be taken along, and those that go along
  std::vector<std::filesystem::path> pictures;  // that go along
};

Result<Preview> WritePreview(const document::MessageDocument& document, message::MessageOptions options,
                             const RunPlace& place);

}  // namespace quillcast::run

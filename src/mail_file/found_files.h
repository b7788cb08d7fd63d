// The list of parts while files are found in the content of some of them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "mail_file/fault_list.h"
#include "mail_file/load_mode.h"
#include "mail_file/message_file.h"
#include "mail_file/part.h"
#include "platform/cancel.h"

namespace quillcast::mail_file {

struct FoundFiles {
  std::shared_ptr<const MessageFile> file;
  LoadMode mode;
  const platform::CancelToken* cancel;
  std::vector<Part>& parts;
  FaultList& faults;

  // Adds an attachment that lies in `holder`, with a type by its name where none is given, and gives its place. The
  // name is cut at kLongestPartText. kNoPart beyond kMostParts, which is told.
  std::size_t Add(std::size_t holder, std::string_view name, std::string_view encoding);
  bool is_cancelled() const;
};

}  // namespace quillcast::mail_file

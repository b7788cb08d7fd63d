#include "message/body_import.h"

namespace quillcast::message {

std::string BodyImportText(std::int32_t code) {
  switch (code) {
    case kBodyNotOpened:
      return "Error 1: Failure opening file.";
    case kBodyNotRead:
      return "Error 2: Failure reading file.";
    case kBodyNoFile:
      return "Error 3: Invalid parameter.";
    case kBodyNotParsed:
      return "Error 101: Exception was thrown during parsing.";
    default:
      return {};
  }
}

}  // namespace quillcast::message

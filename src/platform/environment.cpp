#include "platform/environment.h"

#include <cstdlib>

namespace quillcast::platform {

std::optional<std::string> ProcessEnvironment::Get(const char* name) const {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return {};
  return value;
}

}  // namespace quillcast::platform

// Environment variables, behind a port so that nothing inside reaches for them.
#pragma once

#include <optional>
#include <string>

namespace quillcast::platform {

class Environment {
 public:
  virtual ~Environment() = default;
  // Nothing when the variable is not set. An empty value counts as not set.
  virtual std::optional<std::string> Get(const char* name) const = 0;
};

class ProcessEnvironment final : public Environment {
 public:
  std::optional<std::string> Get(const char* name) const override;
};

}  // namespace quillcast::platform

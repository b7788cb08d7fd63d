// Environment variables, behind a port so that nothing inside reaches for them.
#pragma once

#include <optional>
#include <string>

namespace quillcast::platform {

// The port; its adapters are ProcessEnvironment and what tests put in its place.
class Environment {
 public:
  virtual ~Environment() = default;
  // Nothing when the variable is not set. An empty value counts as not set.
  virtual std::optional<std::string> Get(const char* name) const = 0;
};

// getenv(3): what was exported to this process.
class ProcessEnvironment final : public Environment {
 public:
  std::optional<std::string> Get(const char* name) const override;
};

}  // namespace quillcast::platform

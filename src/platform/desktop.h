// Opening files with the program that the desktop has for their type.
#pragma once

#include <filesystem>

#include "platform/result.h"

namespace quillcast::platform {

// The port; its adapters are XdgDesktop and what tests put in its place.
class Desktop {
 public:
  virtual ~Desktop() = default;
  // Comes back when the program was started, not when the person has closed it.
  virtual Result<void> OpenFile(const std::filesystem::path& file) = 0;
};

// xdg-open, started in the background. Fails with kUnavailable where there is no display or no such program, or where
// it finds none for the file within a second.
class XdgDesktop final : public Desktop {
 public:
  explicit XdgDesktop(bool has_display) : has_display_(has_display) {}
  Result<void> OpenFile(const std::filesystem::path& file) override;

 private:
  bool has_display_;
};

}  // namespace quillcast::platform

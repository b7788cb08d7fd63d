// Opening files with the program that the desktop has for their type.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::platform {

// The port; its adapters are XdgDesktop and what tests put in its place.
class Desktop {
 public:
  virtual ~Desktop() = default;
  // Comes back when the program was started, not when the person has closed it.
  virtual Result<void> OpenFile(const std::filesystem::path& file) = 0;
  // A page of ours on the web, in the browser; `address` is never one of others.
  virtual Result<void> OpenPage(std::string_view address) = 0;
};

// xdg-open, started in the background. Fails with kUnavailable where there is no display or no such program, or where
// it finds none for the file or the page within a second.
class XdgDesktop final : public Desktop {
 public:
  explicit XdgDesktop(bool has_display) : has_display_(has_display) {}
  Result<void> OpenFile(const std::filesystem::path& file) override;
  Result<void> OpenPage(std::string_view address) override;

 private:
  Result<void> Open(std::string what) const;

  bool has_display_;
};

}  // namespace quillcast::platform

// Everything between the start of the program and the moment its main window, or its command, can work.
#pragma once

#include <optional>
#include <string>

#include "platform/result.h"
#include "profile/folders.h"
#include "profile/get_win_ver.h"
#include "profile/min_win_size.h"

namespace quillcast::profile {

// The title by which another instance is known.
inline constexpr const char* kWindowTitle = "Tarnwick Quillcast Classic Edition";

// What the checks look at; gathered by the caller.
struct StartupFacts {
  bool window_with_our_title = false;
  bool other_instance = false;
  VersionRecord version;
  std::optional<PixelSize> screen;  // none for a command, which needs no screen
};

// Why the program ends before it has begun.
struct Refusal {
  std::string message;              // empty: the program ends without a word
  bool flash_other_window = false;  // its caption goes on, for one second, and off
};

// The checks in their order; the first that refuses wins. Nothing is written.
std::optional<Refusal> CheckStartup(const StartupFacts& facts, const Folders& folders);

// Makes the folders, the working copy of Group.mdb where there is none yet, and the history folder. A working copy
// that exists is never touched.
Result<void> PrepareFolders(const Folders& folders);

// This machine, as a version record: of the NT family, and later than any that has a name.
VersionRecord RunningSystem();

}  // namespace quillcast::profile

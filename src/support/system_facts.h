// What a support request tells of this computer.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "profile/min_win_size.h"

namespace quillcast::support {

struct SystemFacts {
  std::string operating_system;              // as it calls itself
  std::string owner;                         // the full name of the user's account on it; may be empty
  std::string host;                          // the computer's own name
  std::optional<profile::PixelSize> screen;  // physical pixels; none without a display
  std::vector<std::string> drives;
  std::string local_address;
};

// All but the screen, which only a window knows. Nothing here asks a name server, a directory or a file system, so
// that it takes no time worth speaking of.
SystemFacts ReadSystemFacts();

// The full name of this user in a file of the form of passwd(5); empty where there is none.
std::string FullNameIn(std::string_view users, uid_t user);

}  // namespace quillcast::support

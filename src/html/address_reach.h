// Where an address leads, as far as it says so itself.
#pragma once

#include <string_view>

namespace quillcast::html {

enum class AddressReach {
  kNet,      // the web, mail, a telephone, a server: what it asks for there is its writer's own
  kFile,     // a file of this computer, or of a server beside it
  kNeither,  // relative, a place in the page, or of a program's own scheme
};

// As browsers read it (the URL standard of the WHATWG): "https:" leads to the web with any number of slashes of either
// kind behind it, and two slashes without a scheme to a server. "http://C:\x" and "https://file:///x" lead to no
// server: something put a scheme before a file. `address` has neither blanks around it nor control characters.
AddressReach ReachOf(std::string_view address);

// The scheme without its colon, empty where there is none.
std::string_view SchemeOfAddress(std::string_view address);

// "file", or how a shared folder of the person's own network is asked for: in any case of letters.
bool IsFileScheme(std::string_view scheme);

// "http", "mailto" and the like, which lead to the net with slashes behind them or without.
bool IsNetScheme(std::string_view scheme);

}  // namespace quillcast::html

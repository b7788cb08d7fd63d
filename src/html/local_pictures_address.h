// Which file an address in HTML names.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::html {

// What an address is to whoever takes files along.
enum class AddressKind {
  kElsewhere,  // of the net, of data, of a part, with a merge tag, or no address
  kRelative,   // to wherever the HTML belongs; the path may be absolute
  kFile,       // "file:"
};

struct LocalAddress {
  AddressKind kind = AddressKind::kElsewhere;
  std::string path;  // percent-decoded, without query and fragment, with slashes
};

// As browsers read it. The path of "file://server/x" is "//server/x", which is missing here rather than passed over.
LocalAddress ReadLocalAddress(std::string address);

// Of a merge tag or a placeholder at the beginning, with what closes it; 0 when there is none.
std::size_t TagLength(std::string_view address);

// Whether something that another program on the way to the reader fills in begins anywhere in it.
bool HoldsPlaceholder(std::string_view text);

// Whether it begins with a merge tag, or with what another program on the way to the reader fills in ("{{url}}",
// "*|URL|*", "%%url%%", "<%url%>"): whoever does so says where it leads.
bool BeginsWithTag(std::string_view address);

// The same, where neither in it nor behind it stands a path of some computer ("{{C:/x}}", "{{x}}/home/ada/a.png").
bool IsFilledIn(std::string_view address);

// Whether the address itself tells a folder of some machine.
bool TellsFolder(const LocalAddress& address);

// A relative address against that of a <base>.
LocalAddress Resolve(const LocalAddress& base, LocalAddress address);

}  // namespace quillcast::html

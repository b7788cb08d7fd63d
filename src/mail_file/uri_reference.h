// Addresses that are meant from where they stand (RFC 3986 5.2).
#pragma once

#include <string>
#include <string_view>

namespace quillcast::mail_file {

// The absolute address that `reference` means in what has the absolute address `base`. Linear in time.
std::string ResolvedUri(std::string_view base, std::string_view reference);

// Whether it begins with a scheme, so that no base counts.
bool IsAbsoluteUri(std::string_view address);

}  // namespace quillcast::mail_file

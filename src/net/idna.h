// Internationalised host names: what a person writes ("müller.example") and what the network knows
// ("xn--mller-kva...").
#pragma once

#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::net {

// The name in A-labels (UTS 46, nontransitional, with every check on). A name in ASCII, or an address, is its own
// answer, whatever it holds. Fails with kNoInput for a name that no host can have, one of more than 255 octets (RFC
// 1035 2.3.4) among them.
Result<std::string> AsciiHost(std::string_view host);

// Labels of 1 to 63 letters, digits, "_" and, but at an end, "-", parted by dots: at most 253 octets (RFC 1035 2.3.4).
// Without the root's dot. The "_" is none by the book, and in use.
bool IsDottedName(std::string_view ascii);

// Whether a host's name, in any script, is one that can be asked for: what AsciiHost makes of it is such a name, with
// or without the root's dot, and nothing in it goes unseen.
bool IsHostName(std::string_view host);

// "mx.example." is "mx.example", said with the root of all names.
constexpr std::string_view WithoutRootDot(std::string_view host) {
  return host.ends_with('.') ? host.substr(0, host.size() - 1) : host;
}

// An e-mail address with its domain in A-labels. It comes back as it is when its domain is ASCII or is not valid.
std::string WithAsciiDomain(std::string_view address);

}  // namespace quillcast::net

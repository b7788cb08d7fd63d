// What a person may type as a domain.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/complaint.h"

namespace quillcast::domain {

enum class DomainControl { kDomain, kServers };
using DomainComplaint = Complaint<DomainControl>;

// What of a typed or pasted text gets into the box: letters, digits and "-", and "." only where the whole name stands.
enum class DotKey { kDropped, kTaken };
std::string FilterDomainKeys(std::string_view typed, DotKey dot);

// The name without its extension, as it stands.
std::optional<DomainComplaint> CheckDomainName(std::string_view name);
// The whole name.
std::optional<DomainComplaint> CheckWholeDomainName(std::string_view name);
// The whole name and the name server to ask; `offered` is how many servers the list has.
std::optional<DomainComplaint> CheckMxQuestion(std::size_t offered, std::string_view server, std::string_view name);

}  // namespace quillcast::domain

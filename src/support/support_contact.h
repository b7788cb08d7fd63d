// Whom a support request goes to.
#pragma once

#include "platform/environment.h"
#include "platform/result.h"
#include "smtp/address.h"

namespace quillcast::support {

inline constexpr const char* kSupportMailbox = "support@quillcast.example";
// For whoever cannot send mail: that may be the very trouble.
inline constexpr const char* kSupportPage = "https://www.quillcast.example/support";
// Names another mailbox, as a company that has a support desk of its own does.
inline constexpr const char* kSupportVariable = "QUILLCAST_SUPPORT_ADDRESS";

// Fails with kUsage where the variable holds no address.
Result<smtp::Address> SupportAddress(const platform::Environment& environment);

}  // namespace quillcast::support

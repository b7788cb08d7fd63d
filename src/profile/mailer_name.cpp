#include "profile/mailer_name.h"

#include <fmt/format.h>

#include "profile/version.h"

namespace quillcast::profile {

std::string MailerName() { return fmt::format("Tarnwick Quillcast Classic {}.{}", kVersionMajor, kVersionMinor); }

}  // namespace quillcast::profile

#include "support/support_contact.h"

namespace quillcast::support {

Result<smtp::Address> SupportAddress(const platform::Environment& environment) {
  auto address = smtp::Address::From(environment.Get(kSupportVariable).value_or(kSupportMailbox));
  if (address) return address;
  return Error{Failure::kUsage, Say("{}: {}", kSupportVariable, address.error().what),
               "Give it the address of a support desk, or unset it."};
}

}  // namespace quillcast::support

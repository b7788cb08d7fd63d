// Secrets that the person's keyring keeps, behind a port: no test reaches a keyring of this machine.
#pragma once

#include <optional>
#include <string>

#include "platform/cancel.h"
#include "platform/result.h"
#include "platform/secret.h"

namespace quillcast::platform {

// What an entry is found by, of which nothing is a secret.
struct SecretName {
  std::string owner;         // whose it is
  std::string server, user;  // for whom alone it was kept
};

// Which entries of an owner.
enum class Which { kNamed, kAllOthers, kAll };

// Each call may take as long as a person needs to unlock a keyring, and ends at the first request of `cancel` with
// kTryAgain.
class SecretStore {
 public:
  virtual ~SecretStore() = default;
  // Nothing where it has no such entry; of several the newest.
  virtual Result<std::optional<Secret>> Find(const SecretName& name, const CancelToken& cancel) = 0;
  // In the place of what it had; `label` is what the person sees of it there.
  virtual Result<void> Keep(const SecretName& name, const std::string& label, const Secret& secret,
                            const CancelToken& cancel) = 0;
  // That there was none is no failure.
  virtual Result<void> Forget(const SecretName& name, Which which, const CancelToken& cancel) = 0;
};

}  // namespace quillcast::platform

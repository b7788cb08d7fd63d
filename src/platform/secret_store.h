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

// What became of a secret that was to be kept.
struct Keeping {
  std::optional<Error> failed = {};
  bool may_have_it = false;  // all the same: it was given the secret, and did not say what it did with it
};

// Each call may take as long as a person needs to unlock a keyring, and ends at the first request of `cancel` with
// kTryAgain.
class SecretStore {
 public:
  virtual ~SecretStore() = default;
  // Nothing where it has no such entry; of several the newest.
  virtual Result<std::optional<Secret>> Find(const SecretName& name, const CancelToken& cancel) = 0;
  // In the place of what it had; `label` is what the person sees of it there.
  virtual Keeping Keep(const SecretName& name, const std::string& label, const Secret& secret,
                       const CancelToken& cancel) = 0;
  // That there was none is no failure.
  virtual Result<void> Forget(const SecretName& name, Which which, const CancelToken& cancel) = 0;
};

}  // namespace quillcast::platform

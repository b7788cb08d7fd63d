// The keyring of the person's session: whatever program serves org.freedesktop.secrets on its D-Bus.
#pragma once

#include <chrono>
#include <string>

#include "platform/environment.h"
#include "platform/secret_store.h"

namespace quillcast::platform {

// Whether and how long the keyring is asked.
struct KeyringPlace {
  bool has_bus = false;                        // the session has a D-Bus
  std::chrono::milliseconds patience{8000};    // for all of a question
  std::chrono::milliseconds unlocking{60000};  // the same where somebody may have to type a password meanwhile
};

// That of this session, which DBUS_SESSION_BUS_ADDRESS names, else where sessions have it below XDG_RUNTIME_DIR. None
// is started where there is none.
KeyringPlace KeyringPlaceOf(const Environment& environment);

// A keyring that is locked is asked to be unlocked only where somebody is there to do so. Errors: kUnavailable where no
// keyring can be asked; kNotPermitted where it stays locked; kTimedOut; kTryAgain after a cancel. Usable from
// any thread.
class Keyring final : public SecretStore {
 public:
  explicit Keyring(KeyringPlace place) : place_(place) {}

  bool may_ask = true;  // somebody is there to unlock it

  Result<std::optional<Secret>> Find(const SecretName& name, const CancelToken& cancel) override;
  Keeping Keep(const SecretName& name, const std::string& label, const Secret& secret,
               const CancelToken& cancel) override;
  Result<void> Forget(const SecretName& name, Which which, const CancelToken& cancel) override;

 private:
  KeyringPlace place_;
};

}  // namespace quillcast::platform

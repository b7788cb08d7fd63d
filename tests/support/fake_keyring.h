// A keyring for tests: what was kept, the calls in their order, and one that refuses or waits for a cancel.
#pragma once

#include <poll.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/secret_store.h"

namespace quillcast::test {

class FakeKeyring final : public platform::SecretStore {
 public:
  std::map<std::string, std::string> kept;  // the secret of each entry
  std::vector<std::string> calls;           // "find", "keep LABEL", "forget"
  bool refuses = false;
  bool hangs = false;

  Result<std::optional<platform::Secret>> Find(const std::string& name, const platform::CancelToken& cancel) override {
    calls.emplace_back("find");
    if (refuses || hangs) return Refused(cancel);
    const auto found = kept.find(name);
    if (found == kept.end()) return std::optional<platform::Secret>();
    return std::optional(platform::Secret(found->second));
  }
  Result<void> Keep(const std::string& name, const std::string& label, const platform::Secret& secret,
                    const platform::CancelToken& cancel) override {
    calls.push_back("keep " + label);
    if (refuses || hangs) return Refused(cancel);
    kept[name] = secret.view();
    return {};
  }
  Result<void> Forget(const std::string& name, const platform::CancelToken& cancel) override {
    calls.emplace_back("forget");
    if (refuses || hangs) return Refused(cancel);
    kept.erase(name);
    return {};
  }
  // The secret of the only entry; empty where there is none.
  std::string Only() const { return kept.size() == 1 ? kept.begin()->second : ""; }

 private:
  Error Refused(const platform::CancelToken& cancel) const {
    if (!hangs) return {Failure::kNotPermitted, "The keyring was not unlocked.", "Unlock it."};
    pollfd waiting{cancel.PollFd(), POLLIN, 0};
    while (cancel.Requested() == platform::Stop::kNone) IgnoreErrors(::poll(&waiting, 1, -1));
    return {Failure::kTryAgain, "Asking the keyring was cancelled."};
  }
};

}  // namespace quillcast::test

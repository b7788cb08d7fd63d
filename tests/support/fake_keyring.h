// A keyring for tests: what was kept, the calls in their order, and one that refuses or waits for a cancel.
#pragma once

#include <poll.h>

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/secret_store.h"

namespace quillcast::test {

class FakeKeyring final : public platform::SecretStore {
 public:
  using Entry = std::array<std::string, 3>;  // owner, server, user
  std::map<Entry, std::string> kept;         // the secret of each
  std::vector<std::string> calls;            // "find", "keep LABEL", "forget WHICH"
  bool refuses = false;
  bool hangs = false;
  bool is_late = false;              // it keeps at once, and answers too late
  bool is_damaged = false;           // it cannot read what it has
  std::function<void()> after_keep;  // what happens to the rest of the world then

  Result<std::optional<platform::Secret>> Find(const platform::SecretName& name,
                                               const platform::CancelToken& cancel) override {
    calls.emplace_back("find");
    if (refuses || hangs) return Refused(cancel);
    if (is_damaged) return Error{Failure::kUnavailable, "The keyring is damaged.", "Mend it."};
    const auto found = kept.find(EntryOf(name));
    if (found == kept.end()) return std::optional<platform::Secret>();
    return std::optional(platform::Secret(found->second));
  }
  platform::Keeping Keep(const platform::SecretName& name, const std::string& label, const platform::Secret& secret,
                         const platform::CancelToken& cancel) override {
    calls.push_back("keep " + label);
    if (refuses || hangs) return {.failed = Refused(cancel)};
    kept[EntryOf(name)] = secret.view();
    if (const auto then = std::exchange(after_keep, nullptr)) then();
    if (is_late) {
      return {.failed = Error{Failure::kTimedOut, "It gave no answer; it may have the password.", "Unlock it."},
              .may_have_it = true};
    }
    return {};
  }
  Result<void> Forget(const platform::SecretName& name, platform::Which which,
                      const platform::CancelToken& cancel) override {
    using platform::Which;
    calls.emplace_back(which == Which::kAll ? "forget all" : which == Which::kNamed ? "forget it" : "forget others");
    if (refuses || hangs) return Refused(cancel);
    std::erase_if(kept, [&](const auto& one) {
      if (which == Which::kNamed) return one.first == EntryOf(name);
      return one.first[0] == name.owner && (which == Which::kAll || one.first != EntryOf(name));
    });
    return {};
  }
  // The secret of the only entry; empty where there is none.
  std::string Only() const { return kept.size() == 1 ? kept.begin()->second : ""; }

 private:
  static Entry EntryOf(const platform::SecretName& name) { return {name.owner, name.server, name.user}; }
  Error Refused(const platform::CancelToken& cancel) const {
    if (!hangs) return {Failure::kNotPermitted, "The keyring was not unlocked.", "Unlock it."};
    pollfd waiting{cancel.PollFd(), POLLIN, 0};
    while (cancel.Requested() == platform::Stop::kNone) IgnoreErrors(::poll(&waiting, 1, -1));
    return {Failure::kTryAgain, "Asking the keyring was cancelled."};
  }
};

}  // namespace quillcast::test

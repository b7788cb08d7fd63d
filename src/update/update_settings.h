// How the check for a newer version reaches the web: the keys `Proxy`, `Address`, `Port` and `Timeout` of `Options`.
#pragma once

#include <optional>
#include <string>

#include "platform/complaint.h"
#include "profile/settings_store.h"

namespace quillcast::update {

// As they are typed and stored.
struct UpdateSettings {
  bool uses_proxy = false;
  std::string address = {};  // of the proxy: a host's name or an IP address
  std::string port = {};
  std::string timeout = "1";  // minutes for the whole question

  static Result<UpdateSettings> Load(const profile::SettingsStore& settings);
  // All four or none.
  Result<void> Save(profile::SettingsStore& settings) const;
};

enum class UpdateControl { kAddress, kPort, kTimeout };

// The first thing that is wrong; address and port only where a proxy is used.
std::optional<Complaint<UpdateControl>> CheckSettings(const UpdateSettings& typed);

// "host:port", with brackets round an IPv6 address. Only of settings that CheckSettings lets through; empty where no
// proxy is used.
std::string ProxyOf(const UpdateSettings& settings);

}  // namespace quillcast::update

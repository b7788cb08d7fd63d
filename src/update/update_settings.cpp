#include "update/update_settings.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace quillcast::update {
namespace {

constexpr const char* kSection = "Options";
constexpr std::int64_t kLastPort = 65535;
constexpr std::int64_t kMostMinutes = 10;

// What can stand in an address that goes to a library as "host:port": neither a user's name nor a path.
bool IsHost(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return platform::AsciiIsAlnum(c) || c == '.' || c == '-' || c == '_' || c == ':'; });
}

}  // namespace

Result<UpdateSettings> UpdateSettings::Load(const profile::SettingsStore& settings) {
  UpdateSettings loaded;
  std::string uses_proxy;
  struct Row {
    const char* key;
    const char* fallback;
    std::string& value;
  };
  for (const Row& row : {Row{"Proxy", "0", uses_proxy}, Row{"Address", "", loaded.address},
                         Row{"Port", "", loaded.port}, Row{"Timeout", "1", loaded.timeout}}) {
    auto value = settings.Read(kSection, row.key, row.fallback);
    if (!value) return value.error();
    row.value = *std::move(value);
  }
  loaded.uses_proxy = uses_proxy == "1";
  return loaded;
}

Result<void> UpdateSettings::Save(profile::SettingsStore& settings) const {
  const std::array<profile::SettingValue, 4> values = {
      {{"Proxy", uses_proxy ? "1" : "0"}, {"Address", address}, {"Port", port}, {"Timeout", timeout}}};
  return settings.WriteAll(kSection, values);
}

std::optional<Complaint<UpdateControl>> CheckSettings(const UpdateSettings& typed) {
  using Complaint = Complaint<UpdateControl>;
  if (typed.uses_proxy) {
    if (typed.address.empty()) return Complaint{"Please enter the address of the proxy.", UpdateControl::kAddress};
    if (!IsHost(typed.address)) return Complaint{"Please enter a valid address of the proxy.", UpdateControl::kAddress};
    if (typed.port.empty()) return Complaint{"Please enter the port of the proxy.", UpdateControl::kPort};
    if (!platform::WholeNumberBetween(typed.port, 1, kLastPort))
      return Complaint{"Please enter a port from 1 to 65535.", UpdateControl::kPort};
  }
  if (!platform::WholeNumberBetween(typed.timeout, 1, kMostMinutes))
    return Complaint{"Please enter from 1 to 10 minutes.", UpdateControl::kTimeout};
  return std::nullopt;
}

std::string ProxyOf(const UpdateSettings& settings) {
  if (!settings.uses_proxy) return {};
  const bool is_v6 = settings.address.find(':') != std::string::npos;
  return (is_v6 ? '[' + settings.address + ']' : settings.address) + ':' + settings.port;
}

}  // namespace quillcast::update

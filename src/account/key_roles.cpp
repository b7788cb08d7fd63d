#include "account/key_roles.h"

#include <array>

namespace quillcast::account {
namespace {

using enum AccountKey;
using enum KeyRole;

struct RoleRow {
  AccountKey key;
  KeyRole role;
};

// In the order of AccountKey. Of the ways to deliver there is one, so what the others would need says nothing about a
// message.
constexpr auto kRoles = std::to_array<RoleRow>({
    {kName, kTheMessage},      {kEmail, kTheMessage},
    {kServer, kTheServer},     {kPort, kTheServer},
    {kAuth, kTheWay},          {kUsername, kTheWay},
    {kPassword, kTheWay},      {kAuthMode, kTheWay},
    {kPipeline, kTheWay},      {kNoAuth, kTheWay},
    {kBoundary, kTheMessage},  {kTimeout, kTheWay},
    {kMethod, kTheWay},        {kToField, kTheMessage},
    {kBccField, kTheWay},      {kThirdField, kTheWay},
    {kThirdPath, kTheWay},     {kHeaderEncoding, kTheMessage},
    {kEncoding, kTheMessage},  {kAttachmentEncoding, kTheMessage},
    {kCharSet, kTheMessage},   {kAutoWrap, kTheMessage},
    {kWrap, kTheMessage},      {kTextPart, kTheMessage},
    {kExtended, kTheWay},      {kDsnNotify, kTheMessage},
    {kDsnReturn, kTheMessage}, {kSecurity, kTheWay},
    {kPasswordFrom, kTheWay},  {kPasswordCommand, kTheWay},
    {kRate, kTheWay},          {kQuotaHour, kTheWay},
    {kQuotaDay, kTheWay},      {kDomainRate, kTheWay},
    {kHours, kTheWay},         {kPauseAfter, kTheWay},
    {kPerConnection, kTheWay}, {kConnections, kTheWay},
    {kRetries, kTheWay},       {kRetryAfter, kTheWay},
    {kSlowDown, kTheWay},      {kNetworkWait, kTheWay},
});

constexpr bool StandsInOrder() {
  for (std::size_t i = 0; i < kRoles.size(); ++i) {
    if (kRoles[i].key != static_cast<AccountKey>(i)) return false;
  }
  return kRoles.size() == static_cast<std::size_t>(kCount);
}
static_assert(StandsInOrder(), "each key has its role");

}  // namespace

KeyRole RoleOf(AccountKey key) { return kRoles[static_cast<std::size_t>(key)].role; }

AccountSettings WithMessageOf(AccountSettings present, const AccountSettings& other) {
  for (const auto& [key, role] : kRoles) {
    if (role == kTheMessage) present.Set(key, other[key]);
  }
  return present;
}

}  // namespace quillcast::account

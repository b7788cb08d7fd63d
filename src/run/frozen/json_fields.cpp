#include "run/frozen/json_fields.h"

#include <limits>

#include "platform/base64.h"
#include "platform/utf8.h"

namespace quillcast::run {
namespace {

constexpr const char* kBase64 = "base64";

}  // namespace

nlohmann::json JsonOfOctets(std::string_view octets) {
  if (platform::IsUtf8(octets)) return octets;
  return {{kBase64, platform::Base64(octets)}};
}

const nlohmann::json& JsonFields::At(const nlohmann::json& object, const char* name) {
  if (Has(object, name)) return *object.find(name);
  static const nlohmann::json nothing;
  Refuse();
  return nothing;
}

std::string JsonFields::Octets(const nlohmann::json& value) {
  if (value.is_string()) return value.get<std::string>();
  const auto& encoded = At(value, kBase64);
  auto octets = encoded.is_string() ? platform::DecodeBase64(encoded.get_ref<const std::string&>()) : std::nullopt;
  if (octets) return *std::move(octets);
  Refuse();
  return {};
}

bool JsonFields::Switch(const nlohmann::json& value) {
  if (!value.is_boolean()) Refuse();
  return value.is_boolean() && value.get<bool>();
}

std::int64_t JsonFields::Number(const nlohmann::json& value, std::int64_t lowest, std::int64_t highest) {
  const bool fits =
      value.is_number_integer() &&
      !(value.is_number_unsigned() && value.get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max());
  const std::int64_t number = fits ? value.get<std::int64_t>() : lowest;
  if (fits && number >= lowest && number <= highest) return number;
  Refuse();
  return lowest;
}

std::size_t JsonFields::Choice(const nlohmann::json& value, std::span<const std::string_view> names) {
  const auto found =
      value.is_string() ? std::find(names.begin(), names.end(), value.get_ref<const std::string&>()) : names.end();
  if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
  Refuse();
  return 0;
}

}  // namespace quillcast::run

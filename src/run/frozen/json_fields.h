// Reads JSON that may be damaged, or written by somebody else: what is not as it should be reads as something empty,
// and is remembered.
#pragma once

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>

namespace quillcast::run {

// Octets as a text where they are UTF-8, else in base64: {"base64": "..."}.
nlohmann::json JsonOfOctets(std::string_view octets);

class JsonFields {
 public:
  // Whether all was well that was asked for until now.
  bool fine() const { return fine_; }
  void Refuse() { fine_ = false; }

  bool Has(const nlohmann::json& object, const char* name) const { return object.is_object() && object.contains(name); }
  const nlohmann::json& At(const nlohmann::json& object, const char* name);
  std::string Octets(const nlohmann::json& value);
  bool Switch(const nlohmann::json& value);
  std::int64_t Number(const nlohmann::json& value, std::int64_t lowest, std::int64_t highest);
  // Which of the names it is.
  std::size_t Choice(const nlohmann::json& value, std::span<const std::string_view> names);
  // Calls `take` with each element.
  template <typename Take>
  void ForEach(const nlohmann::json& array, const Take& take) {
    if (!array.is_array()) return Refuse();
    std::for_each(array.begin(), array.end(), take);
  }

 private:
  bool fine_ = true;
};

}  // namespace quillcast::run

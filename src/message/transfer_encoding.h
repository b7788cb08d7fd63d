// How a part is asked to travel, and how it does.
#pragma once

#include <string_view>

namespace quillcast::message {

// In the order of the account's choices.
enum class TransferEncoding { kNone, kQuotedPrintable, kBase64 };

// What stands in the header of a part. The first two mean: as it stands.
enum class WireForm { kSevenBit, kEightBit, kQuotedPrintable, kBase64 };
inline constexpr std::size_t kWireForms = 4;

// As Content-Transfer-Encoding has it (RFC 2045 6.1).
constexpr std::string_view Name(WireForm form) {
  constexpr std::string_view kNames[kWireForms] = {"7bit", "8bit", "quoted-printable", "base64"};
  return kNames[static_cast<std::size_t>(form)];
}

// Nothing was encoded, so that its lines may begin with anything, a dot included.
constexpr bool IsAsItStands(WireForm form) { return form == WireForm::kSevenBit || form == WireForm::kEightBit; }

}  // namespace quillcast::message

// One entry of an address book, as the eighteen fields of a recipient.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "recipients/recipient.h"

namespace quillcast::recipients {

// The places of kFields. The three additional ones hold what address books have beside: a second address, the
// categories, and a note.
inline constexpr std::size_t kTitle = 1;
inline constexpr std::size_t kCountry = 4;
inline constexpr std::size_t kState = 5;
inline constexpr std::size_t kCity = 6;
inline constexpr std::size_t kStreet = 7;
inline constexpr std::size_t kStreet2 = 8;
inline constexpr std::size_t kZipCode = 9;
inline constexpr std::size_t kPhone = 10;
inline constexpr std::size_t kFax = 11;
inline constexpr std::size_t kCompany = 12;
inline constexpr std::size_t kJobTitle = 13;
inline constexpr std::size_t kWebSite = 14;
inline constexpr std::size_t kSecondEmail = 15;
inline constexpr std::size_t kCategories = 16;
inline constexpr std::size_t kNote = 17;

// What a value longer than this holds is left out, whatever it is.
inline constexpr std::size_t kLongestContactValue = std::size_t{64} * 1024;

class ContactCard {
 public:
  // Nothing of another card any more.
  void Clear();
  // The first that is told stays, unless a later one is preferred.
  void Put(std::size_t field, std::string_view value, bool preferred = false);
  // Values that belong together, such as those of a postal address: all of them or none.
  void PutTogether(std::span<const std::pair<std::size_t, std::string>> values, bool preferred);
  // Of several the preferred, or the first, is the one to write to; the next one is the second.
  void PutEmail(std::string_view address, bool preferred);
  // A name as it is shown; used where there is neither a first nor a last one.
  void PutWholeName(std::string_view name);

  // Valid until the card is changed.
  std::span<const std::string_view> Fields();

 private:
  std::array<std::string, kFieldCount> values_;
  std::array<bool, kFieldCount> preferred_{};
  std::string whole_name_;
  std::array<std::string_view, kFieldCount> fields_;
};

// Bytes that a card has encoded: in `charset` where one is named, else UTF-8 where they are that, else Windows-1252.
std::string DecodeContactText(std::string_view bytes, std::string_view charset);

// "AGk=", with blanks in it, as bytes; empty for what is no base64.
std::string DecodeContactBase64(std::string_view text);

}  // namespace quillcast::recipients

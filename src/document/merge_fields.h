// The eighteen merge tags: the one definition for the whole system.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sentence.h"
#include "recipients/recipient.h"

namespace quillcast::document {

// In the order in which they are replaced, which is also the order of a recipient's fields: tag n stands for field n.
struct MergeField {
  std::string_view tag;
  std::string_view column;
  std::string_view command;  // the control of the command bar that inserts it
};

// The last three rows carry three spellings each: Field, Add and Additional. All of them are kept.
inline constexpr auto kMergeFields = std::to_array<MergeField>({
    {"$*MergeEmail*$", "G-Email", "MergeEmail"},
    {"$*MergeTitle*$", "G-Title", "MergeTitle"},
    {"$*MergeFirstName*$", "G-FirstName", "MergeFirstName"},
    {"$*MergeLastName*$", "G-LastName", "MergeLastName"},
    {"$*MergeCountry*$", "G-Country", "MergeCountry"},
    {"$*MergeState*$", "G-State", "MergeState"},
    {"$*MergeCity*$", "G-City", "MergeCity"},
    {"$*MergeAddress1*$", "G-Address1", "MergeAddress1"},
    {"$*MergeAddress2*$", "G-Address2", "MergeAddress2"},
    {"$*MergeZIPCode*$", "G-ZIPCode", "MergeZIPCode"},
    {"$*MergePhone*$", "G-Phone", "MergePhone"},
    {"$*MergeFax*$", "G-Fax", "MergeFax"},
    {"$*MergeCompany*$", "G-Company", "MergeCompany"},
    {"$*MergeJobTitle*$", "G-JobTitle", "MergeJobTitle"},
    {"$*MergeWebSite*$", "G-WebSite", "MergeWebSite"},
    {"$*MergeField1*$", "G-Add1", "MergeAdditional1"},
    {"$*MergeField2*$", "G-Add2", "MergeAdditional2"},
    {"$*MergeField3*$", "G-Add3", "MergeAdditional3"},
});

using MergeValues = std::array<std::string_view, kMergeFields.size()>;

// The values of a recipient as a message takes them: line ends made "\n", NUL dropped, broken UTF-8 replaced. Views
// into the recipient where nothing had to change, else into `changed`.
MergeValues ValuesForMerge(const recipients::Recipient& recipient,
                           std::array<std::string, kMergeFields.size()>& changed);

// Values may spell later tags, which may hold further ones: a few kilobytes of them could grow without end.
inline constexpr std::size_t kLargestMergedText = std::size_t{128} * 1024 * 1024;

// What merging means: eighteen replacements one after the other over the growing text, all occurrences, case-sensitive.
// A value that spells a later tag is replaced in turn. Nothing when the text would grow beyond kLargestMergedText.
std::optional<std::string> ReplaceMergeFields(std::string text, const MergeValues& values);

// Texts that look like a tag ("$*Merge" up to "*$", within 64 bytes) and are none, each once, the first
// kMostUnknownTags; they would go out as they stand.
inline constexpr std::size_t kMostUnknownTags = 100;
std::vector<std::string> UnknownTags(std::string_view text);
Sentence DescribeUnknownTag(std::string_view tag);

}  // namespace quillcast::document

// What the store holds: groups, and in each group recipients of eighteen text fields.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::recipients {

inline constexpr std::size_t kFieldCount = 18;

struct FieldNames {
  std::string_view column;
  std::string_view label;          // in the lists of export and import
  std::string_view search_label;   // in the field list of the search
  std::string_view search_column;  // the column that the search names
};

// The canonical order: every statement and every list of fields follows it.
inline constexpr std::array<FieldNames, kFieldCount> kFields = {{
    {"G-Email", "Email Address", "Email", "G-Email"},
    {"G-Title", "Title", "Title", "G-Title"},
    {"G-FirstName", "First Name", "First Name", "G-FirstName"},
    {"G-LastName", "Last Name", "Last Name", "G-LastName"},
    {"G-Country", "Country", "Country", "G-Country"},
    {"G-State", "State", "State", "G-State"},
    {"G-City", "City", "City", "G-City"},
    // The search names columns with a blank here, which do not exist: it finds nothing. Deliberate.
    {"G-Address1", "Address 1", "Address 1", "G-Address 1"},
    {"G-Address2", "Address 2", "Address 2", "G-Address 2"},
    {"G-ZIPCode", "ZIP Code", "ZIP Code", "G-ZIPCode"},
    {"G-Phone", "Phone", "Phone", "G-Phone"},
    {"G-Fax", "Fax", "Fax", "G-Fax"},
    {"G-Company", "Company", "Company", "G-Company"},
    {"G-JobTitle", "Job Title", "Job Title", "G-JobTitle"},
    {"G-WebSite", "Web Site", "Web Site", "G-WebSite"},
    {"G-Add1", "Additional Field 1", "Additional Field 1", "G-Add1"},
    {"G-Add2", "Additional Field 2", "Additional Field 2", "G-Add2"},
    {"G-Add3", "Additional Field 3", "Additional Field 3", "G-Add3"},
}};

inline constexpr std::size_t kEmail = 0;
inline constexpr std::size_t kFirstName = 2;
inline constexpr std::size_t kLastName = 3;

// The values of one recipient, in the order of kFields.
struct Recipient {
  std::array<std::string, kFieldCount> values;

  const std::string& email() const { return values[kEmail]; }
  bool operator==(const Recipient&) const = default;
};

struct StoredRecipient {
  std::int64_t id = 0;
  std::int64_t group_id = 0;
  Recipient recipient;
};

// A row of a grid of recipients.
struct GridRow {
  std::int64_t id = 0;
  std::string first_name;
  std::string last_name;
  std::string email;

  bool operator==(const GridRow&) const = default;
};

struct RecipientGroup {
  std::int64_t id = 0;
  std::string name;
  std::string sort_sql;  // empty: the order in which the recipients were added
};

// The position in kFields of a label or a search label (ASCII case does not matter), or kFieldCount.
std::size_t FieldOfLabel(std::string_view label);
// For a name that is none of them; `how` says how they are written there, without its full stop.
Error NoSuchField(std::string_view given, std::string_view how);

}  // namespace quillcast::recipients

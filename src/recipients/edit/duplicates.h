// Who stands more than once: twice in a group, under two ways of writing one address, or in several groups.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/edit/edit.h"

namespace quillcast::recipients {

// One place where an address stands.
struct Holder {
  std::int64_t id = 0;
  std::string group;
  std::string entry;  // as it is stored there: "Ada <ada@example.org>"

  bool operator==(const Holder&) const = default;
};

// The address that a message would go to, and the two or more that it would go to, in the order of adding.
struct DuplicateSet {
  std::string address;
  std::vector<Holder> holders;
};

// Calls `visit` with each set in these groups, in the order of the first of each; until it gives false. With one group
// that is who gets the same mailing twice. No groups are all groups. An entry without an address counts as it stands.
Result<void> FindDuplicates(const RecipientStore& store, std::span<const std::string> groups,
                            const std::function<bool(const DuplicateSet&)>& visit);

// Deletes from a group all but the first of each set, in one change that undo takes back. How many went.
Result<std::int64_t> DeleteDuplicates(const RecipientStore& store, std::string_view group,
                                      const OnProgress& on_progress = {});
Sentence DeleteDuplicatesQuestion(std::int64_t recipients, std::string_view group);

// Every place where an address stands, by itself or within an entry.
Result<std::vector<Holder>> GroupsOfAddress(const RecipientStore& store, std::string_view address);

}  // namespace quillcast::recipients

// The names of a whole group written as names are.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/edit/edit.h"

namespace quillcast::recipients {

// Shown before anything is changed.
struct NameChange {
  std::int64_t id = 0;
  std::string address;
  std::size_t field = kFirstName;  // kFirstName or kLastName
  std::string before;
  std::string after;

  bool operator==(const NameChange&) const = default;
};

// Calls `visit` with each change that CapitaliseGroup would make now, in the order of adding, until it gives false.
// The store can be written meanwhile, however long a visit takes.
Result<void> PreviewCapitals(const RecipientStore& store, std::string_view group,
                             const std::function<bool(const NameChange&)>& visit);

// "Are you sure you want to change the names of 3 recipients in 'A'?"
Sentence CapitaliseQuestion(std::int64_t recipients, std::string_view group);

// How many recipients were changed. Looks anew: what was changed since the preview counts.
Result<std::int64_t> CapitaliseGroup(const RecipientStore& store, std::string_view group,
                                     const OnProgress& on_progress = {});

}  // namespace quillcast::recipients

// Whom a part of a group's list begins and ends with.
#pragma once

#include <string>

#include "platform/cancel.h"
#include "recipients/row_source.h"

namespace quillcast::run {

// "Ada Lovelace <ada@example.org> … Grace Hopper <grace@example.net>", safe to show; one name where both ends are it,
// and none for an end that cannot be read or that `cancel` left out.
std::string EndsOf(recipients::RowSource& names, const recipients::PartialRange& range,
                   const platform::CancelToken& cancel);

}  // namespace quillcast::run

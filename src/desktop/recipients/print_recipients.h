// A list of recipients on paper: a line for each, with its number, names and address.
#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <span>

#include "platform/cancel.h"
#include "platform/file_attributes.h"
#include "recipients/recipient_store.h"

class QPrinter;

namespace quillcast::desktop {

// How many pages were printed. `heading` stands above each page, and on the right its number. Recipients are read as
// the pages need them; those that are gone are left out. A file takes its name (0600) when all of it is there: after a
// cancel, and where the disk or the store fails, what stood under it stands there still, as where it is one of
// the program's `own`. For a thread of its own.
Result<int> PrintRecipients(QPrinter& printer, const recipients::RecipientStore& store, const QString& heading,
                            std::span<const std::int64_t> keys, const platform::OwnFiles& own,
                            const platform::CancelToken& cancel, const std::function<void(std::size_t done)>& progress);

}  // namespace quillcast::desktop

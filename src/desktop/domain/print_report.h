// A report on paper: lines of one width of letter, as they stand in their box.
#pragma once

#include <QString>

#include "platform/cancel.h"
#include "platform/file_attributes.h"
#include "platform/result.h"

class QPrinter;

namespace quillcast::desktop {

// How many pages were printed. A line that is wider than the page goes on below. Into a file whole or not at all, see
// PrintWhole; so it is after a cancel. For a thread of its own.
Result<int> PrintReport(QPrinter& printer, const QString& text, const platform::OwnFiles& own,
                        const platform::CancelToken& cancel);

}  // namespace quillcast::desktop

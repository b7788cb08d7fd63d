// Printing into a file that is there whole or not at all.
#pragma once

#include <filesystem>
#include <functional>

#include "platform/file_attributes.h"
#include "platform/result.h"

class QPrinter;

namespace quillcast::desktop {

// Where `file` is empty, it is the printer.
Error CannotPrint(const std::filesystem::path& file);

// Calls `print`, which draws on the printer and gives the number of pages. Where the printer writes a file, that takes
// its name (0600) when all of it is there: after a failure what stood under it stands there still, as where it is one
// of the program's `own`. The toolkit tells of no disk that is full; here it is kIo, as what `print` fails with when
// the printer does. May be called on any thread.
Result<int> PrintWhole(QPrinter& printer, const platform::OwnFiles& own, const std::function<Result<int>()>& print);
// The same into a file that is open, and that whoever opened it places or takes away; errors call it `told`.
Result<int> PrintInto(QPrinter& printer, int fd, const std::filesystem::path& told,
                      const std::function<Result<int>()>& print);

}  // namespace quillcast::desktop

// The border at which memory that runs out becomes an error: texts are held whole, and a stranger says how long one is.
#pragma once

#include <new>

#include "platform/result.h"

namespace quillcast::mail_file {

// What `work` gives, a Result; in place of memory that there is not an Error (kIo). What is held was let go by then.
template <typename Work>
auto WithinMemory(const Work& work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return Error{Failure::kIo, "There is not enough memory for this text.",
                 "Take it out as a file: that needs no more memory than a short one."};
  }
}

}  // namespace quillcast::mail_file

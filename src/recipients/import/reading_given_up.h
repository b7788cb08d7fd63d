// How the reading of a file is given up before its end.
#pragma once

#include <filesystem>

#include "platform/cancel.h"
#include "platform/result.h"

namespace quillcast::recipients {

// Asked between pieces that take milliseconds. Nobody asks where there is no token.
inline bool IsGivenUp(const platform::CancelToken* cancel) {
  return cancel != nullptr && cancel->Requested() != platform::Stop::kNone;
}

inline Error ReadingGivenUp(const std::filesystem::path& file) {
  return {Failure::kTryAgain, Say("The reading of {} was given up.", file.string())};
}

}  // namespace quillcast::recipients

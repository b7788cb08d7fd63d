// How far work on many recipients has come.
#pragma once

#include <cstdint>
#include <functional>

namespace quillcast::recipients {

// Hears now and then how many of the rows are done, on the thread that works.
using OnProgress = std::function<void(std::int64_t done, std::int64_t total)>;

}  // namespace quillcast::recipients

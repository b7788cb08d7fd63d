// The program's own tag in front of the boundaries of a message.
#pragma once

#include <chrono>
#include <string>

namespace quillcast::message {

// Ten characters, upper-case letters in the places 1, 3, 5, 7 and 9, digits from 1 to 9 in the others, drawn by a
// generator that is seeded from the clock each time. Not unique: what makes a boundary unique stands behind it.
std::string GetBoundaryMarkPrefix(std::chrono::system_clock::time_point now);

}  // namespace quillcast::message

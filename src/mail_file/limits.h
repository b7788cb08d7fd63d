// How much of a message file is taken in, so that memory and time stay bounded whatever a stranger writes. Beyond each
// of these what follows is one attachment, or is left out; the load has kException and says where.
#pragma once

#include <cstddef>

namespace quillcast::mail_file {

inline constexpr std::size_t kMostFields = 20'000;  // header fields of all parts together
inline constexpr std::size_t kMostParts = 10'000;
inline constexpr std::size_t kMostNesting = 100;                                // multiparts and messages in each other
inline constexpr std::size_t kLongestField = std::size_t{1024} * 1024;          // bytes
inline constexpr std::size_t kMostListedFields = std::size_t{4} * 1024 * 1024;  // bytes of the message's own fields
inline constexpr std::size_t kMostFactBytes = std::size_t{8} * 1024 * 1024;     // recipients and stamps together
inline constexpr std::size_t kMostFaults = 100;

}  // namespace quillcast::mail_file

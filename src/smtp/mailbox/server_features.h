// The extensions that the mailbox can offer in its reply to EHLO.
#pragma once

#include <string_view>

#include "platform/result.h"

namespace quillcast::smtp {

// One bit each.
enum Feature : unsigned {
  kPipelining = 1U << 0,
  kSize = 1U << 1,
  kEightBitMime = 1U << 2,
  kBinaryMime = 1U << 3,
  kChunking = 1U << 4,
  kDsn = 1U << 5,
  kUtf8 = 1U << 6,
  kStartTls = 1U << 7,
  kAuth = 1U << 8,
  kEnhancedCodes = 1U << 9,
  kHelp = 1U << 10,
};
using Features = unsigned;  // Feature values joined by |
// What is offered unless somebody takes something out. STARTTLS then still needs a certificate, and AUTH a user.
inline constexpr Features kAllFeatures = (1U << 11) - 1;

// The keyword as EHLO has it, and a person's list of features.
struct FeatureName {
  std::string_view keyword;
  Feature feature;
};

// In the order in which they are offered.
inline constexpr FeatureName kFeatureNames[] = {
    {"PIPELINING", kPipelining},
    {"SIZE", kSize},
    {"8BITMIME", kEightBitMime},
    {"BINARYMIME", kBinaryMime},
    {"CHUNKING", kChunking},
    {"DSN", kDsn},
    {"SMTPUTF8", kUtf8},
    {"STARTTLS", kStartTls},
    {"AUTH", kAuth},
    {"HELP", kHelp},
    {"ENHANCEDSTATUSCODES", kEnhancedCodes},
};

// "PIPELINING,8bitmime" or "none". Fails with kUsage for a keyword that is not known.
Result<Features> ParseFeatures(std::string_view list);

}  // namespace quillcast::smtp

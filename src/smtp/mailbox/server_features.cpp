#include "smtp/mailbox/server_features.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"

namespace quillcast::smtp {
namespace {

Error UnknownKeyword(std::string_view keyword) {
  std::string known;
  for (const auto& row : kFeatureNames) known += (known.empty() ? "" : ", ") + std::string(row.keyword);
  return {Failure::kUsage, Say("\"{}\" is not an extension that the mailbox knows.", keyword),
          Say("Choose from {}, separated by commas, or \"none\".", known)};
}

}  // namespace

Result<Features> ParseFeatures(std::string_view list) {
  if (platform::EqualsIgnoringAsciiCase(platform::Trim(list), "none")) return Features{0};
  Features features = 0;
  for (const auto piece : platform::Split(list, ',')) {
    const auto keyword = platform::Trim(piece);
    const auto* row = std::find_if(std::begin(kFeatureNames), std::end(kFeatureNames), [&](const FeatureName& name) {
      return platform::EqualsIgnoringAsciiCase(name.keyword, keyword);
    });
    if (row == std::end(kFeatureNames)) return UnknownKeyword(keyword);
    features |= row->feature;
  }
  return features;
}

}  // namespace quillcast::smtp

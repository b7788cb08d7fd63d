#include "recipients/recipient.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"

namespace quillcast::recipients {

std::size_t FieldOfLabel(std::string_view label) {
  const auto is_it = [label](const FieldNames& names) {
    return platform::EqualsIgnoringAsciiCase(names.label, label) ||
           platform::EqualsIgnoringAsciiCase(names.search_label, label);
  };
  return static_cast<std::size_t>(std::find_if(kFields.begin(), kFields.end(), is_it) - kFields.begin());
}

Error NoSuchField(std::string_view given, std::string_view how) {
  std::string labels;
  for (const FieldNames& names : kFields) labels += fmt::format("{}\"{}\"", labels.empty() ? "" : ", ", names.label);
  return {Failure::kUsage, Say("\"{}\" names no field.", platform::Printable(given, 100)),
          fmt::format("{}; the fields are {}.", how, labels)};
}

}  // namespace quillcast::recipients

#include "platform/sentence.h"

#include <charconv>

#include "platform/text.h"

namespace quillcast {

Sentence NumberValue(std::int64_t number) { return platform::WithThousands(number); }

std::string Sentence::InEnglish() const {
  return In([](const std::string& pattern) { return pattern; });
}

// A place that has no value stays as it is written: a translation with a slip still says the rest.
std::string Sentence::In(const std::function<std::string(const std::string& pattern)>& translate) const {
  if (!is_ours_) return text_;
  const std::string pattern = translate(text_);
  std::string text;
  std::size_t next = 0;
  for (std::size_t at = 0; at < pattern.size();) {
    const auto open = pattern.find('{', at);
    const auto close = open == std::string::npos ? open : pattern.find('}', open);
    text.append(pattern, at, open == std::string::npos ? open : open - at);
    if (close == std::string::npos) return open == std::string::npos ? text : text.append(pattern, open);
    std::size_t place = next;
    const char* const end = pattern.data() + close;
    const bool is_place = close == open + 1 || std::from_chars(pattern.data() + open + 1, end, place).ptr == end;
    if (close == open + 1) ++next;
    if (is_place && place < values_.size()) {
      text += values_[place].In(translate);
    } else {
      text.append(pattern, open, close + 1 - open);
    }
    at = close + 1;
  }
  return text;
}

}  // namespace quillcast

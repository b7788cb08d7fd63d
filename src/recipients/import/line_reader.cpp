#include "recipients/import/line_reader.h"

#include <algorithm>

namespace quillcast::recipients {
namespace {

bool EndsLine(char c) { return c == '\n' || c == '\r'; }

}  // namespace

Result<bool> LineReader::Next(Line& line) {
  line = {.text = {}, .number = ++number_, .is_too_long = false};
  pending_.clear();
  bool began = false;
  for (;;) {
    if (at_ == block_.size()) {
      auto more = source_.Read(block_);
      if (!more) return more;
      at_ = 0;
      if (!*more) {
        if (!line.is_too_long) line.text = pending_;
        return began;
      }
    }
    if (skip_feed_) {
      skip_feed_ = false;
      if (block_[at_] == '\n' && ++at_ == block_.size()) continue;
    }
    began = true;
    const std::string_view rest = std::string_view(block_).substr(at_);
    const auto length = static_cast<std::size_t>(std::find_if(rest.begin(), rest.end(), EndsLine) - rest.begin());
    const bool has_end = length < rest.size();
    if (pending_.size() + length > kLongestLine) {
      line.is_too_long = true;
      pending_.clear();
      pending_.shrink_to_fit();
    }
    at_ += length;
    if (!has_end) {
      if (!line.is_too_long) pending_.append(rest);
      continue;
    }
    skip_feed_ = rest[length] == '\r';
    ++at_;
    if (line.is_too_long) return true;
    if (pending_.empty()) {
      line.text = rest.substr(0, length);
    } else {
      pending_.append(rest.substr(0, length));
      line.text = pending_;
    }
    return true;
  }
}

}  // namespace quillcast::recipients

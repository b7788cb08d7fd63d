#include "document/merge_pieces.h"

#include <algorithm>

namespace quillcast::document {
namespace {

struct Occurrence {
  std::size_t at;
  std::size_t length;
  int field;
};

std::vector<Occurrence> FindTags(std::string_view text) {
  std::vector<Occurrence> found;
  for (auto at = text.find("$*M"); at != std::string_view::npos; at = text.find("$*M", at + 1)) {
    for (std::size_t i = 0; i < kMergeFields.size(); ++i) {
      const auto tag = kMergeFields[i].tag;
      if (text.substr(at).starts_with(tag)) found.push_back({at, tag.size(), static_cast<int>(i)});
    }
  }
  return found;
}

// Whether some tag begins with the end of `text`: a value put behind it, or what follows an empty one, could complete
// the tag.
bool EndsInsideATag(std::string_view text) {
  const auto dollar = text.rfind('$');
  if (dollar == std::string_view::npos) return false;
  const auto tail = text.substr(dollar);
  return std::any_of(kMergeFields.begin(), kMergeFields.end(), [&](const auto& f) { return f.tag.starts_with(tail); });
}

}  // namespace

MergePieces::MergePieces(std::string text) : text_(std::move(text)) {
  std::size_t done = 0;
  for (const auto& [at, length, field] : FindTags(text_)) {
    used_.set(static_cast<std::size_t>(field));
    if (at < done) {  // two tags share a character: which one wins depends on the order of the table
      tags_stand_apart_ = false;
      continue;
    }
    const auto before = std::string_view(text_).substr(done, at - done);
    if (EndsInsideATag(before)) tags_stand_apart_ = false;
    if (!before.empty()) pieces_.push_back({.literal = std::string(before)});
    pieces_.push_back({.literal = {}, .field = field});
    done = at + length;
  }
  if (done < text_.size()) pieces_.push_back({.literal = text_.substr(done)});
}

bool MergePieces::OnePassHolds(const MergeValues& values) const {
  if (!tags_stand_apart_) return false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto holds = [&](char c) { return values[i].find(c) != std::string_view::npos; };
    if (used_[i] && (holds('$') || holds('*'))) return false;
  }
  return true;
}

std::optional<std::string> MergePieces::Merge(const MergeValues& values) const {
  if (!OnePassHolds(values)) return ReplaceMergeFields(text_, values);
  std::string merged;
  for (const MergePiece& piece : pieces_) {
    merged += piece.field < 0 ? std::string_view(piece.literal) : values[static_cast<std::size_t>(piece.field)];
    if (merged.size() > kLargestMergedText) return {};
  }
  return merged;
}

}  // namespace quillcast::document

// A text compiled at its merge tags, so that one pass gives what eighteen replacements would.
#pragma once

#include <bitset>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/merge_fields.h"

namespace quillcast::document {

// A literal text, or (field >= 0) the place of a value.
struct MergePiece {
  std::string literal;
  int field = -1;
};

// Compiled once and asked for each recipient; text() is what ReplaceMergeFields takes where one pass does not hold.
class MergePieces {
 public:
  // What only looks like a tag is literal text.
  explicit MergePieces(std::string text);

  // As it was given; the pieces one after the other are the same text, its tags in their places.
  const std::string& text() const { return text_; }
  const std::vector<MergePiece>& pieces() const { return pieces_; }
  bool HasTags() const { return used_.any(); }
  const std::bitset<kMergeFields.size()>& used() const { return used_; }  // which tags occur

  // Whether writing the pieces one after the other gives what ReplaceMergeFields gives for these values. It does when
  // no tags of the text overlap or could be completed by a value, and no value that is used holds "$" or "*".
  bool OnePassHolds(const MergeValues& values) const;
  // What ReplaceMergeFields gives for the text, in one pass where that holds.
  std::optional<std::string> Merge(const MergeValues& values) const;

 private:
  std::string text_;
  std::vector<MergePiece> pieces_;
  std::bitset<kMergeFields.size()> used_;
  bool tags_stand_apart_ = true;
};

}  // namespace quillcast::document

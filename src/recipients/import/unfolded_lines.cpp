#include "recipients/import/unfolded_lines.h"

#include "recipients/import/contact_card.h"

namespace quillcast::recipients {
namespace {

bool IsFolded(std::string_view piece) { return piece.starts_with(' ') || piece.starts_with('\t'); }

// The line that is being put together.
class Unfolding {
 public:
  explicit Unfolding(const UnfoldingRules& rules) : rules_(rules) {}

  bool GoesOnWith(std::string_view piece) const { return IsFolded(piece) || awaits_more_; }

  void Begin(std::string_view piece, bool is_too_long) {
    line_.clear();
    is_wanted_ = !is_too_long && rules_.is_wanted(piece);
    is_encoded_ = !is_too_long && rules_.goes_on_behind_equals(piece);
    Take(piece);
  }
  void GoOn(std::string_view piece, bool is_too_long) {
    if (is_too_long) is_wanted_ = false;
    if (IsFolded(piece) && !awaits_more_) piece.remove_prefix(1);
    Take(piece);
  }
  // False where nothing of it is wanted.
  bool IsWanted() const { return is_wanted_; }
  std::string_view line() const { return line_; }

 private:
  void Take(std::string_view piece) {
    awaits_more_ = is_encoded_ && piece.ends_with('=');
    if (awaits_more_) piece.remove_suffix(1);
    if (line_.size() + piece.size() > kLongestContactValue) is_wanted_ = false;
    if (is_wanted_) line_.append(piece);
  }

  const UnfoldingRules& rules_;
  std::string line_;
  bool is_wanted_ = false;
  bool is_encoded_ = false;
  bool awaits_more_ = false;
};

}  // namespace

Result<void> ReadUnfolded(TextSource& source, const UnfoldingRules& rules,
                          const std::function<bool(std::string_view line)>& take) {
  LineReader reader(source);
  Unfolding unfolding(rules);
  Line piece;
  for (;;) {
    const auto more = reader.Next(piece);
    if (!more) return more.error();
    if (*more && unfolding.GoesOnWith(piece.text)) {
      unfolding.GoOn(piece.text, piece.is_too_long);
      continue;
    }
    if (unfolding.IsWanted() && !take(unfolding.line())) return {};
    if (!*more) return {};
    unfolding.Begin(piece.text, piece.is_too_long);
  }
}

}  // namespace quillcast::recipients

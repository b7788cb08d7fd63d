#include "mail_file/body_order.h"

#include <algorithm>
#include <array>
#include <span>

#include "mail_file/body_part.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

using Places = std::span<const std::size_t>;

// What is in a part, or in those that it holds.
enum Content : unsigned {
  kText = 1,
  kPage = 2,
  kPicture = 4,
  kShownText = 8,
  kShownPage = 16,
  kLookedAt = 32,
};

class Walk {
 public:
  Walk(const MailMessage& message, std::string_view type)
      : message_(message),
        parts_(message.parts()),
        shown_(message),
        is_page_wanted_(type == "text/html"),
        children_(parts_.size()),
        content_(parts_.size()) {
    for (std::size_t place = 0; place < parts_.size(); ++place) {
      if (parts_[place].parent != kNoPart) children_[parts_[place].parent].push_back(place);
    }
  }

  std::vector<const Part*> Go() {
    for (std::size_t place = 0; place < parts_.size(); ++place) {
      if (parts_[place].parent == kNoPart) Visit(place);
    }
    return std::move(order_);
  }

 private:
  // Parts hold each other no deeper than kMostNesting and what is found in them.
  void Visit(std::size_t place) {
    order_.push_back(&parts_[place]);
    const Places inner = children_[place];
    if (IsPacked(place)) return Visit(Best(inner));
    if (parts_[place].type == "multipart/alternative" && !inner.empty()) {
      const Places forms = inner.first(FormsOf(inner));
      Visit(Best(forms));
      for (const std::size_t child : inner.subspan(forms.size())) Visit(child);
      return;
    }
    std::vector<std::size_t> chosen(inner.begin(), inner.end());
    for (std::size_t i = 0; i < inner.size(); ++i) LeaveOutOneForm(inner.first(i), inner[i], chosen);
    for (const std::size_t child : chosen) Visit(child);
  }

  // How many of the branches of an alternative are forms of one thing. A text behind the page, where one stands before
  // it, is none: a list server has put its footer there, unless it is that text once more.
  std::size_t FormsOf(Places branches) {
    std::size_t forms = branches.size();
    while (forms > 0 && parts_[branches[forms - 1]].type == "text/plain") --forms;
    unsigned content = 0;
    for (const std::size_t branch : branches.first(forms)) content |= ContentOf(branch);
    if ((content & kShownText) == 0 || (content & kShownPage) == 0) return branches.size();
    while (forms < branches.size() && RepeatsOneOf(branches.first(forms), branches[forms])) ++forms;
    return forms;
  }

  // Whether a text is the last one before it once more.
  bool RepeatsOneOf(Places before, std::size_t text) const {
    const auto last = std::find_if(before.rbegin(), before.rend(),
                                   [this](std::size_t place) { return parts_[place].type == "text/plain"; });
    if (last == before.rend()) return false;
    const auto first = message_.TextOf(parts_[*last]);
    const auto again = message_.TextOf(parts_[text]);
    return first && again && platform::Trim(*first) == platform::Trim(*again);
  }

  // The last of the best.
  std::size_t Best(Places forms) {
    std::size_t best = forms.front();
    for (const std::size_t form : forms) best = RankOf(form) < RankOf(best) ? best : form;
    return best;
  }

  // Of a packed part and the text before it the one that serves better stays.
  void LeaveOutOneForm(Places before, std::size_t packed, std::vector<std::size_t>& chosen) {
    if (!IsPacked(packed)) return;
    for (std::size_t i = before.size(); i-- > 0;) {
      const Part& part = parts_[before[i]];
      const bool is_one_text = IsTextOrPage(part) || part.type == "multipart/alternative";
      if (!is_one_text || (ContentOf(before[i]) & (kShownText | kShownPage)) == 0) continue;
      std::erase(chosen, RankOf(before[i]) < RankOf(packed) ? before[i] : packed);
      return;
    }
  }

  bool IsPacked(std::size_t place) const {
    return !parts_[place].type.starts_with("multipart/") &&
           std::ranges::any_of(children_[place], [this](std::size_t child) { return IsTextOrPage(parts_[child]); });
  }

  // How well a part serves.
  std::size_t RankOf(std::size_t place) {
    const unsigned wanted = is_page_wanted_ ? kPage : kText;
    const unsigned wanted_shown = is_page_wanted_ ? kShownPage : kShownText;
    const std::array<unsigned, 5> ranks = {kText | kPage, wanted, kPicture, kShownText | kShownPage, wanted_shown};
    std::size_t rank = ranks.size();
    while (rank > 0 && (ContentOf(place) & ranks[rank - 1]) == 0) --rank;
    return rank;
  }

  unsigned ContentOf(std::size_t place) {
    unsigned content = content_[place];
    if (content != 0) return content;
    const Part& part = parts_[place];
    content = kLookedAt;
    if (part.is_picture && part.message == kNoPart) content |= kPicture;
    if (IsTextOrPage(part)) {
      const bool is_page = part.type == "text/html";
      content |= is_page ? kPage : kText;
      if (shown_.Shows(part)) content |= is_page ? kShownPage : kShownText;
    }
    for (const std::size_t child : children_[place]) content |= ContentOf(child);
    return content_[place] = content;
  }

  const MailMessage& message_;
  const std::vector<Part>& parts_;
  ShownParts shown_;
  bool is_page_wanted_;
  std::vector<std::vector<std::size_t>> children_;  // of each part, by place
  std::vector<unsigned> content_;                   // 0: not looked at
  std::vector<const Part*> order_;
};

}  // namespace

std::vector<const Part*> ReadingOrder(const MailMessage& message, std::string_view type) {
  return Walk(message, type).Go();
}

}  // namespace quillcast::mail_file

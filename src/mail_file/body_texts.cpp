#include "mail_file/body_texts.h"

#include <unordered_set>

#include "html/html_to_text.h"
#include "platform/text.h"

namespace quillcast::mail_file {

namespace {

bool IsTextOrPage(const Part& part) {
  return part.marker == Marker::kBody && (part.type == "text/html" || part.type == "text/plain");
}

// The parts of which one is to be chosen, and whether one of the wanted type is there.
class Alternatives {
 public:
  Alternatives(const MailMessage& message, std::string_view type) : parts_(message.parts()) {
    for (const Part& part : parts_) {
      if (IsTextOrPage(part)) NotePacked(part);
    }
    for (const Part& part : parts_) {
      if (part.type != type || !HasText(message, part)) continue;
      for (std::size_t place = part.parent; place != kNoPart; place = parts_[place].parent) with_wanted_.insert(place);
    }
  }

  bool HaveOneFor(const Part& part) const {
    for (std::size_t place = part.parent; place != kNoPart; place = parts_[place].parent) {
      const bool is_choice = parts_[place].type == "multipart/alternative" || with_packed_.contains(place);
      if (is_choice && with_wanted_.contains(place)) return true;
    }
    return false;
  }

 private:
  // A body that was found in a packed part (TNEF) is another form of the text beside that part.
  void NotePacked(const Part& part) {
    if (part.parent == kNoPart || parts_[part.parent].type.starts_with("multipart/")) return;
    with_packed_.insert(part.parent);
    with_packed_.insert(parts_[part.parent].parent);
  }

  const std::vector<Part>& parts_;
  std::unordered_set<std::size_t> with_packed_;
  std::unordered_set<std::size_t> with_wanted_;
};

}  // namespace

bool HasText(const MailMessage& message, const Part& part) {
  constexpr std::uint64_t kFew = 16;  // bytes
  if (!IsTextOrPage(part)) return false;
  if (part.source.bytes.size() > kFew) return true;
  const auto text = message.TextOf(part);
  return !text || !platform::Trim(*text).empty();
}

std::vector<const Part*> BodyParts(const MailMessage& message, std::string_view type) {
  const Alternatives alternatives(message, type);
  std::vector<const Part*> chosen;
  for (const Part& part : message.parts()) {
    if (IsTextOrPage(part) && (part.type == type || !alternatives.HaveOneFor(part))) chosen.push_back(&part);
  }
  return chosen;
}

Result<std::string> BodyAsText(const MailMessage& message) {
  std::string out;
  for (const Part* part : BodyParts(message, "text/plain")) {
    auto text = message.TextOf(*part);
    if (!text) return text;
    if (part->type == "text/html") *text = platform::WithLineEnds(html::HtmlToText(*text));
    if (!out.empty() && !out.ends_with("\r\n")) out += "\r\n";
    out += *text;
  }
  return out;
}

}  // namespace quillcast::mail_file

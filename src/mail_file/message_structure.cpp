#include "mail_file/message_structure.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kGuessBudget = std::size_t{16} * 1024 * 1024;  // bytes that are looked at twice
constexpr int kLinesBetweenLooks = 4096;

}  // namespace

MessageStructure::MessageStructure(const MessageFile& file, LoadMode mode, const platform::CancelToken* cancel,
                                   FaultList& faults)
    : file_(file),
      mode_(mode),
      cancel_(cancel),
      faults_(faults),
      lines_(file, {0, file.size()}),
      header_lines_(faults),
      guess_budget_(kGuessBudget),
      border_(file, [this] { return CheckCancel(); }) {}

Result<void> MessageStructure::CheckCancel() {
  if (cancel_ == nullptr || cancel_->Requested() == platform::Stop::kNone) return {};
  return Error{Failure::kTryAgain, "Reading the message was cancelled."};
}

Result<void> MessageStructure::Find() {
  const auto is_mailbox = border_.LookAtBeginning();
  if (!is_mailbox) return is_mailbox.error();
  is_mailbox_ = *is_mailbox;
  for (std::size_t part = AddPart(0); part != kNoPart;) {
    if (auto checked = CheckCancel(); !checked) return checked;
    PartFields fields;
    const auto header = ReadHeader(part, fields);
    if (!header) return header.error();
    const std::size_t levels = levels_.size();
    const bool is_doubled = header->end == HeaderEnd::kDelimiter && header->is_empty && parts_[part].parent != kNoPart;
    if (is_doubled) {
      parts_.pop_back();
      if (header->delimiter.kind == DelimiterKind::kOpen)
        faults_.Add(LoadCode::kNoBoundary, Say("A boundary stands twice before byte {}.", header->delimiter.next));
    } else if (auto opened = Open(part, fields, *header); !opened) {
      return opened;
    }
    if (header->end == HeaderEnd::kTooManyFields) {
      TakeRest(lines_.position(), Say("There are more than {} header fields.", kMostFields));
      return {};
    }
    const bool holds_message = levels_.size() > levels && levels_.back().boundary.empty();
    if (holds_message && header->end == HeaderEnd::kBody) {
      levels_.back().has_children = true;
      part = AddPart(lines_.position());
      continue;
    }
    const auto delimiter = header->end == HeaderEnd::kDelimiter ? header->delimiter : NextDelimiter();
    if (!delimiter) return delimiter.error();
    if (!is_doubled && !parts_[part].holds_parts)
      parts_[part].source.bytes.end = std::max(parts_[part].source.bytes.begin, delimiter->content_end);
    const auto next = NextPart(*delimiter);
    if (!next) return next.error();
    part = *next;
  }
  return {};
}

// Below the innermost level. kNoPart where there may be no more: then the rest was taken.
std::size_t MessageStructure::AddPart(std::uint64_t begin) {
  if (parts_.size() >= kMostParts) {
    TakeRest(begin, Say("There are more than {} parts.", kMostParts));
    return kNoPart;
  }
  Part part;
  part.header = {begin, begin};
  part.depth = static_cast<int>(levels_.size());
  if (!levels_.empty()) {
    const Part& parent = parts_[levels_.back().part];
    part.parent = levels_.back().part;
    const bool is_in_message = levels_.back().boundary.empty();
    part.message = is_in_message ? part.parent : parent.message;
    if (parent.type == "multipart/digest") part.type = "message/rfc822";
  }
  parts_.push_back(std::move(part));
  return parts_.size() - 1;
}

// What the file's first header begins behind: a mark of UTF-8, and the blank lines before the first of a mailbox.
bool MessageStructure::PassBy(MessageLine& line) {
  ByteRange& header = parts_.front().header;
  if (line.begin == 0 && line.text.starts_with(kUtf8Mark)) {
    line.text.remove_prefix(kUtf8Mark.size());
    header.begin = kUtf8Mark.size();
  }
  if (line.begin >= border_.begin()) return false;
  header.begin = line.next;
  return true;
}

Result<MessageStructure::Header> MessageStructure::ReadHeader(std::size_t part, PartFields& fields) {
  const auto take = [&](std::string_view name, std::string_view value) {
    fields.Take(name, value);
    if (part != 0) return;
    facts_.Take(name, value);
    listed_fields_.Take(name, value);
    if (content_length_.empty() && platform::EqualsIgnoringAsciiCase(name, "Content-Length")) content_length_ = value;
  };
  Header header;
  header_lines_.Begin(part == 0);
  MessageLine line;
  for (HeaderLine kind = HeaderLine::kWithin; kind == HeaderLine::kWithin && header.end != HeaderEnd::kDelimiter;) {
    const auto more = lines_.Next(line);
    if (!more) return more.error();
    if (!*more) break;
    if (PassBy(line)) continue;
    if (IsDelimiter(line, header.delimiter)) {
      header.end = HeaderEnd::kDelimiter;
      continue;
    }
    kind = header_lines_.Take(line, take);
    if (kind == HeaderLine::kTooMany) header.end = HeaderEnd::kTooManyFields;
    if (kind == HeaderLine::kTooMany || kind == HeaderLine::kBody) lines_.Back();
    if (kind == HeaderLine::kWithin) content_end_ = line.end;
  }
  header_lines_.End(take);
  header.is_empty = header_lines_.is_empty();
  content_end_ = header.end == HeaderEnd::kDelimiter ? header.delimiter.content_end : lines_.position();
  ByteRange& range = parts_[part].header;
  range = {std::min(range.begin, content_end_), content_end_};  // without fields the mark is the body's
  border_.BeginBody();
  if (part == 0 && is_mailbox_ && header.end == HeaderEnd::kBody) {
    if (const auto heard = border_.HearContentLength(content_length_, content_end_); !heard) return heard.error();
  }
  return header;
}

// A text or page that is a form of the message, or what the pictures beside it belong to, is no attachment, though some
// programs give it a name.
bool MessageStructure::IsBodyByItsPlace(std::size_t part) const {
  const Part& it = parts_[part];
  if (it.parent == kNoPart || (it.type != "text/plain" && it.type != "text/html")) return false;
  const std::string& holder = parts_[it.parent].type;
  const bool is_first = part == it.parent + 1;
  const bool is_start = !it.content_id.empty() && it.content_id == levels_.back().start;
  return holder == "multipart/alternative" || (holder == "multipart/related" && (is_first || is_start));
}

// Makes of a part what its fields say, and a level of what holds others.
Result<void> MessageStructure::Open(std::size_t part, const PartFields& fields, const Header& header) {
  Part& it = parts_[part];
  it.source.bytes = {it.header.end, it.header.end};
  PartMeaning meaning = ReadPartFields(fields, it);
  if (!meaning.is_to_be_saved && IsBodyByItsPlace(part)) it.marker = Marker::kBody;
  if (it.message != kNoPart) it.marker = Marker::kNone;
  const bool is_text = it.type == "text/plain" || it.type == "text/html";
  const bool is_first = part == static_cast<std::size_t>(it.depth);  // all before it hold it
  if (is_text && is_first && it.marker == Marker::kAttachment && !meaning.is_to_be_saved) named_text_ = part;
  if (header.end == HeaderEnd::kTooManyFields) return {};
  if (!meaning.is_multipart && !meaning.is_message) return {};
  if (levels_.size() >= kMostNesting) {
    faults_.Add(LoadCode::kException,
                Say("Parts are nested deeper than {}; what lies in the part at byte {} is one part.", kMostNesting,
                    it.header.begin));
    it.marker = it.message == kNoPart ? Marker::kAttachment : Marker::kNone;
    return {};
  }
  if (meaning.is_multipart) {
    if (meaning.has_two_boundaries)
      faults_.Add(LoadCode::kNoBoundary, Say("The part at byte {} names two boundaries.", it.header.begin));
    if (auto found = FindBoundary(part, meaning.boundary); !found) return found;
    if (meaning.boundary.empty()) {
      it.type = "text/plain";
      it.marker = it.message == kNoPart ? Marker::kBody : Marker::kNone;
      return {};
    }
    it.source.encoding = TransferEncoding::kIdentity;
  }
  it.holds_parts = true;
  levels_.push_back({part, std::move(meaning.boundary), std::move(meaning.start)});
  return {};
}

// Leaves in `boundary` the one to go by; none where the part is to be taken for a text.
Result<void> MessageStructure::FindBoundary(std::size_t part, std::string& boundary) {
  const std::uint64_t begin = parts_[part].header.begin;
  for (const Level& level : levels_) {
    if (!boundary.empty() && level.boundary == boundary)
      faults_.Add(LoadCode::kNoBoundary, Say("The part at byte {} has the boundary of what it lies in, \"{}\".", begin,
                                             platform::Printable(boundary)));
  }
  if (boundary.empty()) faults_.Add(LoadCode::kNoBoundary, Say("The multipart at byte {} names no boundary.", begin));
  if (mode_ == LoadMode::kPlain) return {};
  const ByteRange content{parts_[part].header.end, file_.size()};
  auto guessed = GuessBoundary(file_, content, boundary, guess_budget_);
  if (!guessed) return guessed.error();
  if (!*guessed || **guessed == boundary) return {};
  const bool is_of_another =
      std::ranges::any_of(levels_, [&](const Level& level) { return level.boundary == **guessed; });
  if (is_of_another) return {};
  if (!boundary.empty())
    faults_.Add(LoadCode::kNoBoundary, Say("The boundary \"{}\" of the multipart at byte {} does not come.",
                                           platform::Printable(boundary), begin));
  boundary = std::move(**guessed);
  return {};
}

// Inner levels first: of two with one boundary the inner one takes the line.
bool MessageStructure::IsDelimiter(const MessageLine& line, Delimiter& out) const {
  if (!line.text.starts_with("--")) return false;
  for (std::size_t level = levels_.size(); level-- > 0;) {
    out.kind = DelimiterOf(line.text, levels_[level].boundary);
    if (out.kind == DelimiterKind::kNone) continue;
    out.level = level;
    out.content_end = content_end_;
    out.next = line.next;
    return true;
  }
  return false;
}

Result<MessageStructure::Delimiter> MessageStructure::NextDelimiter() {
  Delimiter found;
  MessageLine line;
  for (int lines = 1;; ++lines) {
    if (lines % kLinesBetweenLooks == 0) {
      if (const auto checked = CheckCancel(); !checked) return checked.error();
    }
    const auto more = lines_.Next(line);
    if (!more) return more.error();
    if (!*more) break;
    if (IsDelimiter(line, found)) return found;
    if (is_mailbox_ && border_.IsPassedBy(line.text, content_end_)) {
      const auto is_within = IsWithinMessage(line);
      if (!is_within) return is_within.error();
      content_end_ = line.end;
      if (*is_within) continue;
      found.kind = DelimiterKind::kNone;
      found.content_end = found.next = border_.content_end();
      if (const auto counted = CountMessages(); !counted) return counted.error();
      return found;
    }
    content_end_ = line.end;
  }
  found.kind = DelimiterKind::kNone;
  found.content_end = found.next = lines_.position();
  return found;
}

// Whether what looks like the first field of the next message lies within this one.
Result<bool> MessageStructure::IsWithinMessage(const MessageLine& line) {
  const auto open = std::ranges::find_if(levels_, [](const Level& level) { return !level.boundary.empty(); });
  return border_.IsWithinMessage(line, open == levels_.end() ? std::string_view() : open->boundary);
}

// Those behind the first of a mailbox, from within the second to the end.
Result<void> MessageStructure::CountMessages() {
  std::int64_t messages = 1;
  MessageLine line;
  for (int lines = 1;; ++lines) {
    if (lines % kLinesBetweenLooks == 0) {
      if (auto checked = CheckCancel(); !checked) return checked;
    }
    const auto more = lines_.Next(line);
    if (!more) return more.error();
    if (!*more) break;
    if (border_.IsPassedBy(line.text, line.begin)) ++messages;
  }
  faults_.Add(LoadCode::kException,
              SayOf(messages, "The file is a mailbox: its first message was read, and {} more was left out.",
                    "The file is a mailbox: its first message was read, and {} more were left out."));
  return {};
}

// Ends the innermost level. A multipart whose boundary never came is a text.
void MessageStructure::CloseInnermost(bool is_closed, std::uint64_t end) {
  const Level level = std::move(levels_.back());
  levels_.pop_back();
  Part& part = parts_[level.part];
  part.source.bytes.end = std::max(part.source.bytes.begin, end);
  if (level.boundary.empty()) return;
  const std::string boundary = platform::Printable(level.boundary);
  if (!level.has_children) {
    part.type = "text/plain";
    part.holds_parts = false;
    part.marker = part.message == kNoPart ? Marker::kBody : Marker::kNone;
    faults_.Add(LoadCode::kNoBoundary,
                Say("The boundary \"{}\" of the multipart at byte {} does not come.", boundary, part.header.begin));
  } else if (!is_closed && !has_rest_) {
    faults_.Add(LoadCode::kNoBoundary,
                Say("The multipart at byte {} is not closed by its boundary \"{}\".", part.header.begin, boundary));
  }
}

// The part that begins behind a delimiter; kNoPart at the end.
Result<std::size_t> MessageStructure::NextPart(Delimiter delimiter) {
  for (;;) {
    const bool is_end = delimiter.kind == DelimiterKind::kNone;
    while (levels_.size() > (is_end ? 0 : delimiter.level + 1)) CloseInnermost(false, delimiter.content_end);
    if (is_end) return kNoPart;
    if (delimiter.kind == DelimiterKind::kOpen) {
      levels_.back().has_children = true;
      return AddPart(delimiter.next);
    }
    CloseInnermost(true, delimiter.next);
    content_end_ = delimiter.next;
    auto next = NextDelimiter();
    if (!next) return next.error();
    delimiter = *next;
  }
}

// What is beyond a limit, to the end of the file.
void MessageStructure::TakeRest(std::uint64_t begin, const Sentence& why) {
  faults_.Add(LoadCode::kException, Say("{} What follows byte {} is kept as one part.", why, begin));
  has_rest_ = true;
  const std::size_t parent = levels_.empty() ? 0 : levels_.front().part;
  while (!levels_.empty()) CloseInnermost(false, file_.size());
  Part rest;
  rest.parent = parent;
  rest.depth = 1;
  rest.type = "application/octet-stream";
  rest.encoding = "binary";
  rest.marker = Marker::kAttachment;
  rest.header = {begin, begin};
  rest.source.bytes = {begin, file_.size()};
  parts_.push_back(std::move(rest));
}

}  // namespace quillcast::mail_file

#include "mail_file/inline_files.h"

#include <algorithm>
#include <optional>

#include "mail_file/decoded_lines.h"
#include "mail_file/gmime_border.h"
#include "mail_file/message_lines.h"
#include "mail_file/packed_parts.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::string_view kBinHexLine = "(This file must be converted with BinHex";

// The name in "begin 644 name"; nothing for any other line.
std::optional<std::string_view> UuencodedName(std::string_view line) {
  if (!line.starts_with("begin ")) return {};
  line.remove_prefix(6);
  const std::size_t mode = line.find_first_not_of("01234567");
  if (mode == std::string_view::npos || mode < 3 || mode > 4 || line[mode] != ' ') return {};
  const std::string_view name = platform::Trim(line.substr(mode));
  return name.empty() ? std::nullopt : std::optional(name);
}

// Whether a line is as long as its first character says; some writers leave out blanks at the end, or add a check
// digit.
bool IsUuencodedLine(std::string_view line) {
  if (line.empty() || line[0] < ' ' || line[0] > '`') return false;
  const std::size_t bytes = static_cast<std::size_t>(line[0] - ' ') & 63;
  const std::size_t digits = (bytes + 2) / 3 * 4;
  if (line.size() > digits + 2 || (bytes > 0 && line.size() < 2)) return false;
  return std::ranges::all_of(line, [](char c) { return c >= ' ' && c <= '`'; });
}

// The text behind the last " name=" of a line "=ybegin line=128 size=123456 name=a b.bin".
std::string_view YencName(std::string_view line) {
  const std::size_t name = line.find(" name=");
  return name == std::string_view::npos ? std::string_view() : platform::Trim(line.substr(name + 6));
}

// The lines of a text that is not encoded.
class PlainLines {
 public:
  PlainLines(std::shared_ptr<const MessageFile> file, const PartSource& source)
      : file_(std::move(file)), begin_(source.bytes.begin), lines_(*file_, source.bytes) {}

  Result<bool> Next(MessageLine& line) { return lines_.Next(line); }
  void Back() { lines_.Back(); }
  std::uint64_t position() const { return lines_.position(); }
  std::uint64_t begin() const { return begin_; }
  void Remember() {}  // every place of the file can be gone to
  PartSource SourceOf(ByteRange lines, Unpacking unpacking) const { return {.bytes = lines, .unpacking = unpacking}; }

 private:
  std::shared_ptr<const MessageFile> file_;
  std::uint64_t begin_;
  MessageLines lines_;
};

// The files in the lines of a text, whichever way those are read.
template <typename Lines>
class InlineSearch {
 public:
  InlineSearch(FoundFiles& found, std::size_t text)
      : found_(found), text_(text), lines_(found.file, found.parts[text].source) {}

  Result<void> Run() {
    MessageLine line;
    for (;;) {
      if (found_.is_cancelled()) return Error{Failure::kTryAgain, "Reading the message was cancelled."};
      const auto more = lines_.Next(line);
      if (!more) return more.error();
      if (!*more) return {};
      if (auto taken = TakeLine(line); !taken) return taken;
    }
  }

 private:
  Result<void> TakeLine(const MessageLine& line) {
    lines_.Remember();
    if (const auto name = UuencodedName(line.text)) return TakeUuencoded(line.begin, line.next, std::string(*name));
    if (line.text.starts_with("=ybegin ")) return TakeYenc(line.begin, std::string(YencName(line.text)));
    if (line.text.starts_with(kBinHexLine)) return TakeBinHexText(line.begin);
    return {};
  }

  // Lines for as long as `is_within` says so of them. The one that ends it belongs to it where it says that, else comes
  // again. Gives where the last of them ends.
  template <typename Within>
  Result<std::uint64_t> SkipWhile(const Within& is_within) {
    MessageLine line;
    std::uint64_t end = lines_.position();
    for (;;) {
      const auto more = lines_.Next(line);
      if (!more) return more.error();
      if (!*more) return end;
      const Step step = is_within(line.text);
      if (step == Step::kOutside) {
        lines_.Back();
        return end;
      }
      end = line.next;
      if (step == Step::kLast) return end;
    }
  }

  Result<void> TakeUuencoded(std::uint64_t begin, std::uint64_t content, const std::string& name) {
    bool has_lines = false;
    const auto end = SkipWhile([&](std::string_view line) {
      if (line == "end") return Step::kLast;
      if (!IsUuencodedLine(line)) return Step::kOutside;
      has_lines = true;
      return Step::kWithin;
    });
    if (!end) return end.error();
    if (!has_lines) return {};  // words of the text
    const std::size_t part = Add(DecodeHeaderText(name), "x-uuencode", {begin, *end});
    if (part == kNoPart) return {};
    found_.parts[part].source = lines_.SourceOf({content, *end}, Unpacking::kUuencoded);
    return {};
  }

  Result<void> TakeYenc(std::uint64_t begin, const std::string& name) {
    const auto end =
        SkipWhile([](std::string_view line) { return line.starts_with("=yend") ? Step::kLast : Step::kWithin; });
    if (!end) return end.error();
    const std::string shown = DecodeHeaderText(name);
    found_.faults.Add(LoadCode::kUnknownEncoding,
                      Say("The file \"{}\" in the text is encoded by yEnc.", platform::Printable(shown, 100)));
    const std::size_t part = Add(shown, "yenc", {begin, *end});
    if (part == kNoPart) return {};
    found_.parts[part].source = lines_.SourceOf({begin, *end}, Unpacking::kNone);
    if (found_.mode == LoadMode::kPlain) found_.parts[part].refused = "yEnc";
    return {};
  }

  Result<void> TakeBinHexText(std::uint64_t begin) {
    bool has_begun = false;
    const auto end = SkipWhile([&](std::string_view line) {
      const bool begins = !has_begun && line.starts_with(':');
      has_begun |= begins;
      const bool ends = has_begun && line.ends_with(':') && !(begins && line.size() == 1);
      return ends ? Step::kLast : Step::kWithin;
    });
    if (!end) return end.error();
    const PartSource source = lines_.SourceOf({begin, *end}, Unpacking::kBinHexData);
    const auto looked = LookAtBinHex(found_, source);
    if (!looked) return looked.error();
    if (!looked->is_used) return {};
    const std::size_t part = Add(looked->name, "binhex", {begin, *end});
    if (part != kNoPart) found_.parts[part].source = source;
    return {};
  }

  std::size_t Add(std::string_view name, std::string_view encoding, ByteRange lines) {
    const std::size_t part = found_.Add(text_, name, encoding);
    if (part != kNoPart)
      found_.parts[text_].files_within.push_back({lines.begin - lines_.begin(), lines.end - lines_.begin()});
    return part;
  }

  enum class Step { kWithin, kLast, kOutside };

  FoundFiles& found_;
  std::size_t text_;
  Lines lines_;
};

}  // namespace

Result<void> FindInlineFiles(FoundFiles& found, std::size_t text) {
  if (found.parts[text].source.encoding == TransferEncoding::kIdentity)
    return InlineSearch<PlainLines>(found, text).Run();
  return InlineSearch<DecodedLines>(found, text).Run();
}

Result<std::optional<UuencodedBegin>> FindUuencoded(const MessageFile& file, ByteRange bytes) {
  MessageLines lines(file, bytes);
  MessageLine line;
  for (;;) {
    const auto more = lines.Next(line);
    if (!more) return more.error();
    if (!*more) return std::optional<UuencodedBegin>();
    if (const auto name = UuencodedName(line.text))
      return std::optional(UuencodedBegin{line.next, DecodeHeaderText(*name)});
  }
}

}  // namespace quillcast::mail_file

#include "mail_file/mail_message.h"

#include <algorithm>
#include <new>

#include "mail_file/body_text.h"
#include "mail_file/flowed_text.h"
#include "mail_file/header_lines.h"
#include "mail_file/message_lines.h"
#include "mail_file/message_structure.h"
#include "mail_file/packed_parts.h"
#include "mail_file/safe_part_name.h"
#include "mail_file/within_memory.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// Gathers a text, block by block, without the files that stand in it.
class TextWithoutFiles {
 public:
  explicit TextWithoutFiles(const std::vector<ByteRange>& files) : files_(files) {}

  void Append(std::string_view block) {
    while (!block.empty()) {
      const bool is_behind_all = file_ == files_.size();
      const bool is_in_file = !is_behind_all && at_ >= files_[file_].begin;
      const std::uint64_t stop = is_behind_all ? at_ + block.size()
                                 : is_in_file  ? files_[file_].end
                                               : files_[file_].begin;
      const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), stop - std::min(stop, at_)));
      if (!is_in_file) bytes_ += block.substr(0, size);
      block.remove_prefix(size);
      at_ += size;
      if (is_in_file && at_ >= stop) ++file_;
    }
  }
  const std::string& bytes() const { return bytes_; }

 private:
  const std::vector<ByteRange>& files_;  // in their order
  std::size_t file_ = 0;                 // the next, or the one that is passed over
  std::uint64_t at_ = 0;
  std::string bytes_;
};

// The files of a text come to be found out only when the whole structure is known.
Result<void> FindParts(const std::shared_ptr<const MessageFile>& file, const LoadOptions& options, FaultList& faults,
                       std::vector<Part>& parts, MessageFacts& facts) {
  MessageStructure structure(*file, options.mode, options.cancel, faults);
  auto found = structure.Find();
  if (structure.facts().is_full())
    faults.Add(LoadCode::kException, "There are more recipients or relay stamps than are kept; the rest was left out.");
  if (const auto count = static_cast<std::int64_t>(structure.fields_left_out()); count > 0) {
    faults.Add(LoadCode::kException,
               SayOf(count, "{} header field is not listed: with it, the header takes more than 4 MiB.",
                     "{} header fields are not listed: with them, the header takes more than 4 MiB."));
  }
  facts = structure.facts().Finish();
  parts = std::move(structure.parts());
  if (!found) return found;
  FoundFiles files{file, options.mode, options.cancel, parts, faults};
  auto unpacked = UnpackParts(files);
  const std::size_t named = structure.named_text();
  const bool has_body = std::ranges::any_of(parts, [](const Part& part) { return part.marker == Marker::kBody; });
  if (!unpacked || has_body || named == kNoPart) return unpacked;
  parts[named].marker = Marker::kBody;
  return UnpackText(files, named);
}

bool WasCancelled(const Result<void>& result) { return !result && result.error().failure == Failure::kTryAgain; }

Result<Loading> LoadOpen(const std::shared_ptr<const MessageFile>& file, const LoadOptions& options) {
  Loading loading;
  FaultList faults;
  std::vector<Part> parts;
  MessageFacts facts;
  try {  // the one place where memory that runs out is a code
    const auto found = FindParts(file, options, faults, parts, facts);
    if (WasCancelled(found)) return found.error();
    if (!found) faults.Add(LoadCode::kFileIo, AsSentence(found.error()));
  } catch (const std::bad_alloc&) {
    faults.Add(LoadCode::kOutOfMemory, "There is not enough memory for the list of the message's parts.");
  }
  loading.faults = faults.Take();
  if (!parts.empty()) loading.message.emplace(file, std::move(parts), std::move(facts));
  return loading;
}

}  // namespace

bool MailMessage::ShowsSomething(const Part& part, const std::function<bool()>& find) const {
  shows_something_.resize(parts_.size());
  auto& known = shows_something_[static_cast<std::size_t>(&part - parts_.data())];
  if (!known) known = find();
  return *known;
}

Error MailMessage::Refused(const Part& part) const {
  const std::string name =
      part.name.empty() ? FileNameOf(part, static_cast<std::size_t>(&part - parts_.data())) : part.name;
  return {Failure::kBadData,
          Say("The part \"{}\" is encoded by {}, which is not decoded here.", platform::Printable(name, 100),
              platform::Printable(part.refused, 100)),
          "Ask its sender for the file in another form, or tick \"Use server extensions that are not announced; read "
          "message files leniently\" in the account, to have it as it stands."};
}

Result<void> MailMessage::EachField(const Part& part, const TakeField& take) const {
  FaultList told;  // by the load
  HeaderLines fields(told);
  fields.Begin(part.parent == kNoPart);
  ListedFields listed;
  const auto decode = [&](std::string_view name, std::string_view value) {
    if (listed.Take(name, value)) take(name, DecodeHeaderText(value));
  };
  MessageLines lines(*file_, part.header);
  MessageLine line;
  for (;;) {
    const auto more = lines.Next(line);
    if (!more) return more.error();
    if (!*more || fields.Take(line, decode) != HeaderLine::kWithin) break;
  }
  fields.End(decode);
  return {};
}

Result<PartReader> MailMessage::Open(const Part& part) const {
  if (!part.refused.empty()) return Refused(part);
  return PartReader(file_, part.source);
}

PartReader MailMessage::OpenAsItStands(const Part& part) const {
  PartSource source;
  source.bytes = {part.header.begin, part.source.bytes.end};
  return PartReader(file_, source);
}

Result<std::string> MailMessage::TextOf(const Part& part) const {
  return WithinMemory([&] { return WholeText(part); });
}

Result<std::string> MailMessage::WholeText(const Part& part) const {
  if (!part.refused.empty()) return Refused(part);
  TextWithoutFiles text(part.files_within);
  PartReader reader(file_, part.source);
  for (;;) {
    const auto block = reader.Next();
    if (!block) return block.error();
    if (block->empty()) break;
    text.Append(*block);
  }
  std::string decoded = DecodeBody(text.bytes(), part.charset, part.type == "text/html");
  std::erase(decoded, '\0');  // is no text (RFC 5322 2.3), and ends one for whoever reads on
  std::string lines = platform::WithLineEnds(decoded);
  return part.flow == Flow::kFixed ? std::move(lines) : Unflowed(lines, part.flow);
}

bool MailMessage::HasBody(std::string_view type) const {
  return std::ranges::any_of(parts_,
                             [&](const Part& part) { return part.marker == Marker::kBody && part.type == type; });
}

Result<std::string> MailMessage::BodyOf(std::string_view type) const {
  std::string out;
  const auto is_of_it = [&](const Part& part) { return part.marker == Marker::kBody && part.type == type; };
  const bool has_readable =
      std::ranges::any_of(parts_, [&](const Part& part) { return is_of_it(part) && part.refused.empty(); });
  for (const Part& part : parts_) {
    if (!is_of_it(part) || (has_readable && !part.refused.empty())) continue;
    auto text = TextOf(part);
    if (!text) return text;
    if (!out.empty() && !out.ends_with("\r\n")) out += "\r\n";
    out += out.empty() ? std::move(*text) : *text;
  }
  return out;
}

Result<std::string> MailMessage::TextBody() const { return BodyOf("text/plain"); }

Result<std::string> MailMessage::HtmlBody() const { return BodyOf("text/html"); }

Result<Loading> Load(const std::filesystem::path& path, const LoadOptions& options) {
  Loading nothing;
  const auto file = MessageFile::Open(path);
  if (!file) {
    nothing.faults.push_back({LoadCode::kFileIo, AsSentence(file.error())});
    return nothing;
  }
  if ((*file)->size() == 0) {
    nothing.faults.push_back(
        {LoadCode::kFileIo,
         Say("\"{}\" is empty.", platform::Printable(options.name.empty() ? path.string() : options.name))});
    return nothing;
  }
  return LoadOpen(*file, options);
}

}  // namespace quillcast::mail_file

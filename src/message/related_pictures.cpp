#include "message/related_pictures.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "html/html_tokenizer.h"
#include "html/local_name.h"
#include "html/local_names.h"
#include "html/local_pictures.h"
#include "html/local_pictures_address.h"
#include "message/body_import.h"
#include "message/message_parts.h"
#include "platform/text.h"

namespace quillcast::message {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostListed = 20;
constexpr std::size_t kMostNamed = 3;       // in a question
constexpr const char* kNoName = "picture";  // for a folder that is named as one

// One document's pictures, each put where it belongs in `result`.
class Taking {
 public:
  Taking(const FileSource& files, std::string_view content_id_suffix)
      : files_(files), content_id_suffix_(content_id_suffix) {}

  struct Taken {
    std::string content_id;  // empty for a file that is not taken
    bool is_there = true;
  };
  Taken Take(const fs::path& file, const html::PictureReference& reference);
  RelatedPictures result;

 private:
  const FileSource& files_;
  const std::string_view content_id_suffix_;
  std::set<fs::path> foreign_;
};

// No file has a longer name.
bool CanBeThere(const fs::path& file) {
  constexpr std::size_t kLongestName = 255;
  return std::all_of(file.begin(), file.end(), [](const fs::path& one) { return one.native().size() <= kLongestName; });
}

Taking::Taken Taking::Take(const fs::path& file, const html::PictureReference& reference) {
  auto found = files_.FindPicture(file);
  if (auto* trouble = std::get_if<PictureTrouble>(&found)) {
    const bool is_there = trouble->code != kBodyNotOpened && CanBeThere(file);
    if (!is_there && reference.leads_to != html::LeadsTo::kFile) {
      trouble->file = reference.path;
      trouble->is_filled_in = reference.leads_to == html::LeadsTo::kFilledIn;
    }
    result.troubles.push_back(std::move(*trouble));
    return {{}, is_there};
  }
  if (auto* foreign = std::get_if<ForeignPicture>(&found)) {
    if (foreign_.insert(foreign->file).second) result.foreign.push_back(std::move(*foreign));
    return {};
  }
  auto& picture = std::get<Picture>(found);
  picture.content_id = fmt::format("picture{}.{}", result.pictures.size() + 1, content_id_suffix_);
  result.pictures.push_back(std::move(picture));
  return {result.pictures.back().content_id};
}

// Whether quotation marks, blanks and whatever else would mean something beside it are none of it.
bool IsPlain(std::string_view tag) { return tag.find_first_of("\"'`<>()&=\\ \t\r\n\f") == std::string_view::npos; }

// The name as an address has it, but what another program fills in there as it is.
std::string EncodedName(std::string_view name) {
  constexpr std::size_t kLongestTag = 200;
  std::string out;
  std::size_t encoded = 0;
  for (std::size_t at = 0; at < name.size();) {
    const std::size_t length = html::TagLength(name.substr(at, kLongestTag));
    if (length == 0 || !IsPlain(name.substr(at, length))) {
      ++at;
      continue;
    }
    out += platform::PercentEncoded(name.substr(encoded, at - encoded));
    out += name.substr(at, length);
    encoded = at += length;
  }
  return out + platform::PercentEncoded(name.substr(encoded));
}

// "-C:\x", which in a style has no backslashes once it is read.
bool IsPathBehindSigns(std::string_view written) {
  return written.find('\\') != std::string_view::npos &&
         !platform::StartsWithIgnoringAsciiCase(platform::Trim(written), "file:") &&
         html::AddressNamesLocalFile(written);
}

// What stands for a picture that does not go along: its name alone, for the folders on the way to it are nobody else's
// business. Nothing where the address holds no more than that, in whichever way it is written.
std::string NameAlone(const html::PictureReference& reference, std::string_view written) {
  if (written.find_first_of("/\\:%&<") == std::string_view::npos) return {};
  const std::string read = html::DecodeCharacterReferences(written, true);
  const std::string path = IsPathBehindSigns(read) ? platform::PercentDecoded(read).value_or(kNoName) : reference.path;
  const std::string file = fs::path(path).lexically_normal().filename().string();
  const std::string name = file.substr(file.rfind('\\') + 1);  // of a path that was encoded as one piece
  const bool is_name = !name.empty() && name != "." && name != "..";
  return is_name ? EncodedName(name) : kNoName;
}

// What was encoded, with its merge tags as they were.
std::string WithTags(const std::string& encoded) {
  return platform::ReplaceAll(platform::ReplaceAll(encoded, "%24%2AMerge", "$*Merge"), "%2A%24", "*$");
}

// A folder, and the one of whoever it belongs to; one right below the root tells nothing.
std::vector<std::string> FoldersOf(const fs::path& base) {
  constexpr auto kOfPersons = std::to_array<std::string_view>({"home", "media", "Users", "Volumes"});
  std::string folder = base.lexically_normal().string();
  if (folder.ends_with('/')) folder.pop_back();
  const std::size_t second = std::min(folder.find('/', 1), folder.size());
  if (!folder.starts_with('/') || second == folder.size()) return {};
  std::vector<std::string> known = {folder};
  const std::string first = folder.substr(1, second - 1);
  if (std::find(kOfPersons.begin(), kOfPersons.end(), first) != kOfPersons.end()) {
    known.push_back(folder.substr(0, folder.find('/', second + 1)));
  }
  return known;
}

// Of the document's folder, by the name it was opened by and by its own.
std::vector<std::string> KnownFolders(const fs::path& base) {
  std::vector<std::string> known = FoldersOf(base);
  const fs::path real = fs::weakly_canonical(base, IgnoreErrors());
  for (std::string& folder : FoldersOf(real)) {
    if (std::find(known.begin(), known.end(), folder) == known.end()) known.push_back(std::move(folder));
  }
  return known;
}

// The HTML without what else would tell of this machine's folders. A base leads nowhere from here on: what starts from
// it was taken, or has its name alone; so does what a tag names. Whatever names a file elsewhere goes.
std::string WithoutFolders(const std::string& html, const fs::path& base) {
  const auto telling = html::FindTellingAddresses(html);
  std::vector<std::string> replacements;
  replacements.reserve(telling.size());
  for (const auto& reference : telling) {
    replacements.push_back(reference.path.empty() ? "#" : WithTags(EncodedName(reference.path)));
  }
  return html::WithoutLocalNames(html::RewriteReferences(html, telling, replacements), KnownFolders(base));
}

Sentence FirstOf(const std::vector<fs::path>& files) {
  std::string names;
  for (std::size_t i = 0; i < files.size() && i < kMostNamed; ++i) {
    names += (i == 0 ? "" : ", ") + platform::Printable(files[i].string(), 300);
  }
  return files.size() > kMostNamed ? Say("{} and {} more", names, files.size() - kMostNamed) : Sentence(names);
}

template <typename Item>
void AppendListed(std::vector<Sentence>& lines, const std::vector<Item>& items, SentencePattern<1> one_more,
                  SentencePattern<1> many_more) {
  for (std::size_t i = 0; i < items.size() && i < kMostListed; ++i) lines.push_back(Describe(items[i]));
  if (items.size() <= kMostListed) return;
  lines.push_back(SayOf(std::ssize(items) - std::int64_t{kMostListed}, one_more, many_more));
}

}  // namespace

Sentence Describe(const PictureTrouble& trouble) {
  const std::string file = platform::Printable(trouble.file, 300);
  if (trouble.is_filled_in) return Say("The picture {} is no file of this computer.", file);
  if (trouble.code == kBodyNotOpened) return Say("The picture {} is missing or may not be read.", file);
  if (trouble.code == kBodyNotRead) return Say("The picture {} cannot be read.", file);
  if (trouble.code == kBodyNoFile) return Say("The picture {} is no file that can be taken along.", file);
  return Say("The picture {} is no picture.", file);
}

Sentence GoesWithout(const PictureTrouble& trouble) {
  if (trouble.is_filled_in) {
    return Say("{} Its address goes out as it is written, for another program to fill in.", Describe(trouble));
  }
  return Say("{} The message goes out without it; its name alone stays.", Describe(trouble));
}

Sentence Describe(const Picture& picture) {
  return Say("The picture {} goes along ({}).", platform::Printable(picture.file.string(), 300),
             platform::HumanSize(picture.size));
}

Sentence Describe(const ForeignPicture& picture) {
  const std::string file = platform::Printable(picture.file.string(), 300);
  return picture.left_out
             ? Say("The picture {} lies outside the document's folder and is left out; only its name goes out.", file)
             : Say("The picture {} lies outside the document's folder and does not go along unless you "
                   "allow it: only its name goes out.",
                   file);
}

RelatedPictures TakePictures(const document::MessageDocument& document, std::string_view content_id_suffix,
                             const platform::CancelToken* cancel) {
  return TakePictures(document, content_id_suffix, DocumentFiles(document), cancel);
}

RelatedPictures TakePictures(const document::MessageDocument& document, std::string_view content_id_suffix,
                             const FileSource& files, const platform::CancelToken* cancel) {
  const fs::path base = document.base_folder.empty() ? fs::path("/") : document.base_folder;
  Taking taking(files, content_id_suffix);
  std::map<fs::path, Taking::Taken> files_taken;
  const auto references = html::FindLocalPictures(document.html);
  std::vector<std::string> replacements;
  for (const auto& reference : references) {
    if (cancel != nullptr && cancel->Requested() != platform::Stop::kNone) break;
    const fs::path file = (base / reference.path).lexically_normal();
    const auto [known, is_new] = files_taken.try_emplace(file);
    if (is_new) known->second = taking.Take(file, reference);
    const auto& [content_id, is_there] = known->second;
    const auto written = std::string_view(document.html).substr(reference.offset, reference.length);
    const bool stays = !is_there && reference.leads_to == html::LeadsTo::kFilledIn;
    replacements.push_back(!content_id.empty() ? "cid:" + content_id
                           : stays             ? std::string()
                                               : NameAlone(reference, written));
  }
  taking.result.html = WithoutFolders(html::RewriteReferences(document.html, references, replacements), base);
  return std::move(taking.result);
}

Result<RelatedPictures> LookForPictures(const document::MessageDocument& document, const MessageOptions& options,
                                        const platform::CancelToken& cancel) {
  if (!TakesPictures(document, options)) return RelatedPictures();
  auto pictures = TakePictures(document, {}, &cancel);
  if (cancel.Requested() == platform::Stop::kNone) return pictures;
  return Error{Failure::kTryAgain, "The look at the pictures was stopped.", ""};
}

bool TakesPictures(const document::MessageDocument& document, const MessageOptions& options) {
  return HasHtml(PartsOf(document, options));
}

std::vector<Sentence> ListPictures(const std::vector<Picture>& pictures, const std::vector<ForeignPicture>& foreign) {
  std::vector<Sentence> lines;
  AppendListed(lines, pictures, "And {} more picture that go along.", "And {} more pictures that go along.");
  AppendListed(lines, foreign, "And {} more picture from outside the document's folder.",
               "And {} more pictures from outside the document's folder.");
  return lines;
}

std::vector<fs::path> PicturesToAskFor(const std::vector<ForeignPicture>& foreign) {
  std::vector<fs::path> files;
  for (const auto& picture : foreign) {
    if (!picture.left_out) files.push_back(picture.file);
  }
  return files;
}

Sentence NameForeign(const std::vector<fs::path>& files) {
  return SayOf(std::ssize(files), "The document names {} picture outside its own folder: {}.",
               "The document names {} pictures outside its own folder: {}.", FirstOf(files));
}

Sentence PictureQuestion(const std::vector<fs::path>& files) {
  return files.size() == 1 ? Say("{} Shall it go along?", NameForeign(files))
                           : Say("{} Shall they go along?", NameForeign(files));
}

}  // namespace quillcast::message

#include "document/document_look.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>
#include <utility>

#include "document/designs.h"
#include "document/link_trouble.h"
#include "document/merge_fields.h"
#include "document/message_properties.h"
#include "document/page_walk.h"
#include "document/picture_kind.h"
#include "html/local_name.h"
#include "html/local_pictures.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

namespace fs = std::filesystem;
using platform::HumanSize;
using platform::Printable;

// A widely used reader shows so much of a page and hides the rest behind a link.
constexpr std::uint64_t kShownHtml = std::uint64_t{102} * 1024;
// With fewer words beside it, a picture is the message.
constexpr std::int64_t kFewWords = 20;
constexpr std::size_t kMostFiles = 10'000;                        // that are known by name, so that each counts once
constexpr std::int64_t kMostTroubles = 20;                        // links that are told of one by one
constexpr std::uint64_t kHeavy = std::uint64_t{3} * 1024 * 1024;  // octets of a message that is slow on phones
constexpr std::uint64_t kHeaderOctets = 800;                      // of a message and its parts, about

// In quoted-printable, with CRLF and its soft line breaks, about.
std::uint64_t SizeAsSent(std::string_view text) {
  constexpr std::uint64_t kLine = 75;
  constexpr std::uint64_t kSoftBreak = 3;
  std::uint64_t octets = 0;
  std::uint64_t column = 0;
  for (const char c : text) {
    if (c == '\n') {
      octets += 2;
      column = 0;
      continue;
    }
    const bool is_plain = c == '\t' || (c >= ' ' && c <= '~' && c != '=');
    const std::uint64_t width = is_plain ? 1 : 3;
    if (column + width > kLine) octets += kSoftBreak, column = 0;
    column += width;
    octets += width;
  }
  return octets;
}

// In base64, with a line end after each 76 characters.
std::uint64_t InBase64(std::uint64_t octets) {
  const std::uint64_t characters = (octets + 2) / 3 * 4;
  return characters + (characters + 75) / 76 * 2;
}

class Look {
 public:
  Look(const MessageDocument& document, bool has_text_part)
      : document_(document), is_html_(document.format == Format::kHtml), has_text_part_(has_text_part || !is_html_) {}

  DocumentLook Run(const platform::CancelToken& cancel) {
    page_ = WalkPage(
        document_.html, [this](const auto& target, const auto& text) { AddLink(target, text); }, cancel);
    look_.words = page_.words;
    if (is_html_) {
      html::VisitLocalPictures(document_.html, [&](const html::PictureReference& reference) {
        if (cancel.Requested() == platform::Stop::kNone) AddPicture(reference.path);
      });
    }
    if (cancel.Requested() != platform::Stop::kNone) return {};
    look_.size = kHeaderOctets;
    if (is_html_) look_.size += SizeAsSent(document_.html);
    if (has_text_part_) look_.size += SizeAsSent(document_.PlainText());
    CollectFindings();
    return std::move(look_);
  }

 private:
  void AddLink(std::string_view target, std::string_view text) {
    auto trouble = LinkTrouble(target, text);
    if (trouble && ++troubled_links_ <= kMostTroubles) link_findings_.push_back(*trouble);
    ++look_.link_count;
    if (look_.links.size() >= kMostListed) return;
    look_.links.push_back({Printable(text), Printable(platform::Trim(target)), std::move(trouble)});
  }

  void AddPicture(const std::string& path) {
    if (seen_.contains(path)) return;
    if (seen_.size() < kMostFiles) seen_.insert(path);
    std::error_code failed;
    const fs::path file = "/" / document_.base_folder / path;  // a document without a folder lies in the root
    const bool is_there = fs::is_regular_file(file, failed) && !failed;
    const std::uint64_t size = is_there ? fs::file_size(file, failed) : 0;
    const bool is_missing = !is_there || failed;
    if (!is_missing) look_.picture_size += InBase64(size);
    if (is_missing && ++missing_files_ == 1) first_missing_ = Printable(path);
    const bool is_other = !is_missing && !IsPicture(file);
    if (is_other && ++other_files_ == 1) first_other_ = Printable(path);
    ++look_.picture_count;
    if (look_.pictures.size() >= kMostListed) return;
    look_.pictures.push_back({Printable(path), is_missing ? std::nullopt : std::optional(size), is_other});
  }

  void CollectFindings() {
    if (is_html_) FindWhatHidesTheMessage();
    if (!page_.speaks_of_leaving) {
      Find("Nothing tells readers how to get no more of these messages. Add a link or an address to unsubscribe.");
    }
    FindWhatWasLeft(is_html_ ? document_.html : document_.PlainText());
    if (!is_html_) return;
    FindLinks();
    FindPictures();
    FindTitle();
  }

  void FindTitle() {
    const std::string title = TitleOf(document_.html);
    if (title.empty()) {
      Find("The document has no title, which browsers show and screen readers say first. Give it one in its head.");
    } else if (html::WordsNameLocalFile(title)) {
      Find(Say("The title “{}” tells recipients where the document lies on this computer. Give it words in its place.",
               Printable(title, 100)));
    }
  }

  void FindWhatHidesTheMessage() {
    if (document_.html.size() > kShownHtml) {
      Find(
          Say("The HTML is {} long, and a widely used reader cuts it off at {}. Shorten it, or clear what a word "
              "processor left in it.",
              HumanSize(document_.html.size()), HumanSize(kShownHtml)));
    }
    const bool shows_nothing = page_.words == 0 && !page_.has_described_picture;
    const bool shows_pictures = page_.large_pictures > 0 && page_.words < kFewWords;
    if (shows_pictures && page_.pictures == 1) {
      Find(
          "The message is one picture: who does not load it reads nothing, and filters take it for spam. Write its "
          "words as text.");
    } else if (shows_pictures || (page_.pictures > 0 && page_.words == 0)) {
      Find(
          "The message is hardly more than pictures: who does not load them reads nothing, and filters take it for "
          "spam. Write its words as text.");
    }
    const std::uint64_t size = look_.size + look_.picture_size;
    if (size > kHeavy) {
      Find(
          Say("A message is about {}, which goes out once to each recipient: phones load it slowly, and many mailboxes "
              "refuse more than 10 MiB. Make its pictures smaller.",
              HumanSize(size)));
    }
    if (!has_text_part_) {
      Find(
          "The account sends no text part, so that readers without HTML get nothing to read. Switch on its text part.");
    } else if (shows_nothing && !document_.text) {
      Find(
          "The text part will be empty, because the document holds no words. Write some, or give its pictures "
          "alternative texts.");
    }
  }

  // What waits to be filled in, or was meant as a tag.
  void FindWhatWasLeft(const std::string& body) {
    for (Sentence& left : SamplesLeft(body)) Find(std::move(left));
    std::vector<std::string> tags = UnknownTags(body);
    tags.resize(std::min<std::size_t>(tags.size(), kMostTroubles));
    for (const std::string& tag : tags) Find(DescribeUnknownTag(tag));
  }

  void FindLinks() {
    for (Sentence& trouble : link_findings_) Find(std::move(trouble));
    const std::int64_t more = troubled_links_ - kMostTroubles;
    if (more > 0) Find(SayOf(more, "And {} more link is not in order.", "And {} more links are not in order."));
  }

  void FindPictures() {
    if (missing_files_ > 0) {
      Find(SayOf(missing_files_, "{} picture is missing: “{}”. Put it where the document says, or take it out.",
                 "{} pictures are missing, the first is “{}”. Put them where the document says, or take them out.",
                 first_missing_));
    }
    if (other_files_ > 0) {
      Find(SayOf(other_files_, "{} file that stands for a picture is none: “{}”. Put a picture in its place.",
                 "{} files that stand for pictures are none, the first is “{}”. Put pictures in their place.",
                 first_other_));
    }
    if (page_.without_text > 0) {
      Find(SayOf(
          page_.without_text,
          "{} picture has no alternative text: “{}”. Say what it shows, or give it an empty one if it only "
          "decorates.",
          "{} pictures have no alternative text, the first is “{}”. Say what they show, or give them empty ones if "
          "they only decorate.",
          Printable(page_.first_without_text, 100)));
    }
  }

  void Find(Sentence finding) { look_.findings.push_back(std::move(finding)); }

  const MessageDocument& document_;
  bool is_html_;
  bool has_text_part_;
  PageFacts page_;
  DocumentLook look_;
  std::unordered_set<std::string> seen_;
  std::vector<Sentence> link_findings_;
  std::int64_t troubled_links_ = 0;
  std::int64_t missing_files_ = 0;
  std::string first_missing_;
  std::int64_t other_files_ = 0;  // that are no pictures
  std::string first_other_;
};

}  // namespace

Result<DocumentLook> LookAt(const MessageDocument& document, bool has_text_part, const platform::CancelToken& cancel) {
  DocumentLook look = Look(document, has_text_part).Run(cancel);
  if (cancel.Requested() == platform::Stop::kNone) return look;
  return Error{Failure::kTryAgain, "The look over the document was stopped.", ""};
}

Sentence SizeOf(const DocumentLook& look) {
  const Sentence words = SayOf(look.words, "{} word", "{} words");
  if (look.picture_size == 0) return Say("{}; a message is about {}.", words, HumanSize(look.size));
  return Say("{}; a message is about {}, and {} with {}.", words, HumanSize(look.size),
             HumanSize(look.size + look.picture_size), SayOf(look.picture_count, "its {} picture", "its {} pictures"));
}

Sentence Describe(const LookedLink& link) {
  return link.text.empty() ? Sentence(link.target) : Say("{}: {}", link.text, link.target);
}

Sentence Describe(const LookedPicture& picture) {
  if (!picture.size) return Say("{}, missing", picture.file);
  return picture.is_other ? Say("{}, no picture", picture.file) : Say("{}, {}", picture.file, HumanSize(*picture.size));
}

Sentence MoreLinks(const DocumentLook& look) {
  const std::int64_t more = look.link_count - std::ssize(look.links);
  return more > 0 ? SayOf(more, "And {} more link.", "And {} more links.") : Sentence();
}

Sentence MorePictures(const DocumentLook& look) {
  const std::int64_t more = look.picture_count - std::ssize(look.pictures);
  return more > 0 ? SayOf(more, "And {} more picture.", "And {} more pictures.") : Sentence();
}

}  // namespace quillcast::document

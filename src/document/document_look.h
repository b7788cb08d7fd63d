// What a look over a document finds before it is sent: how long and how heavy it is, where its links lead, and what
// would hurt the mailing. Window and command show the same sentences.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "document/message_document.h"
#include "platform/cancel.h"
#include "platform/result.h"
#include "platform/sentence.h"

namespace quillcast::document {

// Of so many links and pictures each the first are kept; the others are only counted.
inline constexpr std::size_t kMostListed = 300;

// A link, as the page has it, both fit to be shown and cut where they are long.
struct LookedLink {
  std::string text;    // its words, or those of its picture
  std::string target;  // its address
  std::optional<Sentence> trouble;

  bool operator==(const LookedLink&) const = default;
};

// A file that the document takes a picture from.
struct LookedPicture {
  std::string file;                   // as the document names it, fit to be shown
  std::optional<std::uint64_t> size;  // octets; nothing where it is missing
  bool is_other = false;              // no picture by its content

  bool operator==(const LookedPicture&) const = default;
};

struct DocumentLook {
  std::int64_t words = 0;  // that a reader sees; of Chinese and Japanese each character
  // Octets of one message, about: its texts, encoded as quoted-printable, and its pictures, as base64, beside them.
  std::uint64_t size = 0;
  std::uint64_t picture_size = 0;
  std::vector<LookedPicture> pictures;  // each file once, in the order of the page
  std::int64_t picture_count = 0;
  std::vector<LookedLink> links;  // in the order of the page
  std::int64_t link_count = 0;
  std::vector<Sentence> findings;  // the worst first; empty where nothing would hurt
};

// `has_text_part`: whether the account sends a text part beside HTML. Of files the size
// and the beginning are read. Time in proportion to the document. Fails with kTryAgain after a cancel. Known limits:
// beyond 10,000 files of pictures one that is named again counts again; style sheets are not applied.
Result<DocumentLook> LookAt(const MessageDocument& document, bool has_text_part, const platform::CancelToken& cancel);

// "120 words; a message is about 12 KiB, and 340 KiB with 3 pictures."
Sentence SizeOf(const DocumentLook& look);
Sentence Describe(const LookedLink& link);
Sentence Describe(const LookedPicture& picture);
// What stands behind the lists: how many more there are. Empty where all are listed.
Sentence MoreLinks(const DocumentLook& look);
Sentence MorePictures(const DocumentLook& look);

}  // namespace quillcast::document

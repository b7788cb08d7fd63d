#include "mail_file/body_page.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "document/message_document.h"
#include "html/closed_page.h"
#include "mail_file/body_order.h"
#include "mail_file/body_part.h"
#include "mail_file/body_texts.h"
#include "mail_file/embedded_parts.h"
#include "mail_file/within_memory.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// Whether a part is a picture that may stand among the texts.
bool IsBeside(const MailMessage& message, const EmbeddedParts& embedded, const Part& part) {
  if (!part.is_picture || part.message != kNoPart) return false;
  bool is_among = part.parent == kNoPart;
  if (!is_among) {
    const std::string& holder = message.parts()[part.parent].type;
    is_among = holder == "multipart/mixed" || holder == "multipart/related";
  }
  return is_among && !embedded.PictureTypeOf(part).empty();
}

// Whether a part is a text or page of the body with anything in it, which may be what cannot be decoded.
bool MayHaveText(ShownParts& shown, const Part& part) {
  constexpr std::uint64_t kFew = 16;  // bytes of a page
  if (!IsTextOrPage(part)) return false;
  const bool is_long_page = part.type == "text/html" && part.source.bytes.size() > kFew;
  return is_long_page || !part.refused.empty() || shown.Shows(part);
}

// The texts, or the pages, of a body, one after the other, and between them its pictures.
class PageWriter {
 public:
  PageWriter(const MailMessage& message, TextAsHtml text_as_html)
      : message_(message), text_as_html_(text_as_html), embedded_(message) {}

  Result<std::string> Write() {
    const bool is_page = HasPage(message_);
    std::vector<const Part*> bodies;
    for (const Part* part : ReadingOrder(message_, is_page ? "text/html" : "text/plain")) {
      if (IsBeside(message_, embedded_, *part)) pieces_.push_back({part, ""});
      if (!IsTextOrPage(*part) || (!is_page && part->type == "text/html")) continue;  // one that shows nothing
      bodies.push_back(part);
      if (!part->refused.empty()) continue;
      auto text = message_.TextOf(*part);
      if (!text) return text;
      if (is_page && part->type == "text/plain") *text = BesideAPage(*text);
      if (is_page && text->empty()) continue;
      if (part->type == "text/html") *text = embedded_.WithAddresses(*part, *text, used_);
      pieces_.push_back({part, std::move(*text)});
    }
    if (auto why = WhyUnread(message_, bodies); why && !HasPicture()) return *std::move(why);
    if (pieces_.empty()) return text_as_html_("");
    if (is_page) PartPages();
    return Join(is_page ? nullptr : text_as_html_);
  }

 private:
  struct Piece {
    const Part* part;
    std::string text;  // of the body, else empty
  };

  bool HasPicture() const {
    return std::ranges::any_of(pieces_, [](const Piece& piece) { return piece.part->marker != Marker::kBody; });
  }

  static std::string BesideAPage(std::string_view text) {
    text = platform::Trim(text);
    return text.empty() ? std::string() : "<article>" + document::HtmlFromText(text) + "</article>";
  }

  // What a page uses stands there alone, and what it leaves open does not reach into the next one.
  void PartPages() {
    embedded_.NoteUsedBySheets(used_);
    std::erase_if(pieces_, [this](const Piece& piece) {
      return piece.part->marker != Marker::kBody && used_.contains(piece.part);
    });
    if (pieces_.size() < 2) return;
    for (Piece& piece : pieces_) piece.text = html::ClosedPage(piece.text);
    // Without it tables take colours and sizes from the <body> alone, which says nothing any more.
    pieces_.front().text.insert(0, "<!DOCTYPE html>");
  }

  // Texts that follow each other are one.
  std::string Join(TextAsHtml as_html) {
    std::string out;
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
      Piece& piece = pieces_[i];
      if (piece.part->marker != Marker::kBody) {
        out += "<p><img src=\"" + embedded_.AddressOf(*piece.part) + "\"></p>";
        continue;
      }
      for (; i + 1 < pieces_.size() && pieces_[i + 1].part->marker == Marker::kBody; ++i)
        Append(piece.text, std::move(pieces_[i + 1].text));
      Append(out, as_html != nullptr ? as_html(piece.text) : std::move(piece.text));
    }
    return out;
  }

  static void Append(std::string& out, std::string text) {
    if (!out.empty() && !out.ends_with("\r\n")) out += "\r\n";
    out = out.empty() ? std::move(text) : std::move(out) + text;
  }

  const MailMessage& message_;
  TextAsHtml text_as_html_;
  EmbeddedParts embedded_;
  std::vector<Piece> pieces_;
  EmbeddedParts::Used used_;  // by the pages
};

}  // namespace

bool HasPage(const MailMessage& message) {
  const auto bodies = BodyParts(message, "text/html");
  const auto is_page = [](const Part* part) { return part->type == "text/html"; };
  ShownParts shown(message);
  if (std::ranges::any_of(bodies, [&](const Part* part) { return is_page(part) && shown.Shows(*part); })) return true;
  return std::ranges::any_of(bodies, is_page) && std::ranges::none_of(message.parts(), [&](const Part& part) {
           return part.type == "text/plain" && shown.Shows(part);
         });
}

bool HasPicturesBeside(const MailMessage& message) {
  const EmbeddedParts embedded(message);
  const auto order = ReadingOrder(message, HasPage(message) ? "text/html" : "text/plain");
  return std::ranges::any_of(order, [&](const Part* part) { return IsBeside(message, embedded, *part); });
}

Result<std::string> BodyAsHtml(const MailMessage& message, TextAsHtml text_as_html) {
  return WithinMemory([&] { return PageWriter(message, text_as_html).Write(); });
}

std::optional<Error> WhyNoBody(const MailMessage& message) {
  return HasPicturesBeside(message) ? std::nullopt : WhyNoText(message);
}

std::optional<Error> WhyNoText(const MailMessage& message) {
  ShownParts shown(message);
  if (std::ranges::any_of(message.parts(), [&](const Part& part) { return MayHaveText(shown, part); })) return {};
  constexpr std::array kSealed = {"multipart/encrypted", "application/pgp-encrypted", "application/pkcs7-mime",
                                  "application/x-pkcs7-mime"};
  const bool is_sealed = std::ranges::any_of(message.parts(), [&](const Part& part) {
    return part.message == kNoPart && std::ranges::find(kSealed, part.type) != kSealed.end();
  });
  if (is_sealed) {
    return Error{Failure::kBadData,
                 "The message has no text that can be read: it is encrypted, or sealed by a signature.",
                 "Open it in the program that has its keys."};
  }
  return Error{Failure::kBadData, "The message has no text.", "What is attached to it can be extracted."};
}

}  // namespace quillcast::mail_file

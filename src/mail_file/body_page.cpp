#include "mail_file/body_page.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "document/message_document.h"
#include "html/closed_page.h"
#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "mail_file/body_texts.h"
#include "mail_file/embedded_parts.h"
#include "mail_file/within_memory.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint64_t kLargestEmptyPage = std::uint64_t{256} << 10;  // bytes; who writes more shows something

bool ShowsSomething(std::string_view html) {
  html::HtmlTokenizer page(html);
  html::HtmlToken token;
  while (page.Next(token)) {
    if (token.kind == html::HtmlTokenKind::kStartTag && token.name == "img") return true;
  }
  std::string text = html::HtmlToText(html);
  constexpr std::string_view kNoBreak = "\u00a0";
  for (std::size_t at = 0; (at = text.find(kNoBreak, at)) != std::string::npos;) text.replace(at, kNoBreak.size(), " ");
  return !platform::Trim(text).empty();
}

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

// The texts, or the pages, of a body, one after the other, and between them its pictures.
class PageWriter {
 public:
  PageWriter(const MailMessage& message, TextAsHtml text_as_html)
      : message_(message), text_as_html_(text_as_html), embedded_(message) {}

  Result<std::string> Write() {
    const bool is_page = HasPage(message_);
    const auto bodies = is_page ? BodyParts(message_, "text/html") : TextsAlone();
    auto next = bodies.begin();
    for (const Part& part : message_.parts()) {
      const bool is_body = next != bodies.end() && *next == &part;
      if (is_body) ++next;
      if (!is_body && !IsBeside(message_, embedded_, part)) continue;
      auto text = is_body ? message_.TextOf(part) : Result<std::string>("");
      if (!text) return text;
      if (is_body && is_page && part.type == "text/plain") *text = BesideAPage(*text);
      if (is_body && is_page && text->empty()) continue;
      if (is_body && part.type == "text/html") *text = embedded_.WithAddresses(part, *text, used_);
      pieces_.push_back({&part, std::move(*text)});
    }
    if (pieces_.empty()) return text_as_html_("");
    if (is_page) PartPages();
    return Join(is_page ? nullptr : text_as_html_);
  }

 private:
  struct Piece {
    const Part* part;
    std::string text;  // of the body, else empty
  };

  // Pages that show nothing stay out.
  std::vector<const Part*> TextsAlone() const {
    auto texts = BodyParts(message_, "text/plain");
    std::erase_if(texts, [](const Part* part) { return part->type != "text/plain"; });
    return texts;
  }

  static std::string BesideAPage(std::string_view text) {
    text = platform::Trim(text);
    return text.empty() ? std::string() : "<div>" + document::HtmlFromText(text) + "</div>";
  }

  // What a page uses stands there alone, and what it leaves open does not reach into the next one.
  void PartPages() {
    embedded_.NoteUsedBySheets(used_);
    std::erase_if(pieces_, [this](const Piece& piece) {
      return piece.part->marker != Marker::kBody && used_.contains(piece.part);
    });
    if (pieces_.size() < 2) return;
    for (Piece& piece : pieces_) piece.text = html::ClosedPage(piece.text);
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
  std::uint64_t size = 0;
  bool has_text = false;
  for (const Part& part : message.parts()) {
    if (part.marker == Marker::kBody && part.type == "text/html") size += part.source.bytes.size();
    has_text = has_text || (part.type == "text/plain" && HasText(message, part));
  }
  if (!message.HasBody("text/html")) return false;
  if (!has_text || size > kLargestEmptyPage) return true;
  const auto page = message.HtmlBody();
  return !page || ShowsSomething(*page);
}

bool HasPicturesBeside(const MailMessage& message) {
  const EmbeddedParts embedded(message);
  return std::ranges::any_of(message.parts(), [&](const Part& part) { return IsBeside(message, embedded, part); });
}

Result<std::string> BodyAsHtml(const MailMessage& message, TextAsHtml text_as_html) {
  return WithinMemory([&] { return PageWriter(message, text_as_html).Write(); });
}

std::optional<Error> WhyNoBody(const MailMessage& message) {
  return HasPicturesBeside(message) ? std::nullopt : WhyNoText(message);
}

std::optional<Error> WhyNoText(const MailMessage& message) {
  if (std::ranges::any_of(message.parts(), [&](const Part& part) { return HasText(message, part); })) return {};
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

#include "mail_file/body_folder.h"

#include <algorithm>
#include <array>
#include <optional>

#include "document/picture_kind.h"
#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "html/safe_page.h"
#include "mail_file/data_picture.h"
#include "mail_file/safe_part_name.h"
#include "mail_file/within_memory.h"
#include "mime/media_type.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// A file is opened as what its ending says, and it is to be what its content is.
std::string PictureName(const Part& part, std::size_t place, const std::string& type) {
  std::string name = FileNameOf(part, place);
  if (mime::MediaTypeOf(name, {}) != type) name += EndingOfType(type);
  return name;
}

// Whether there is more in it than line ends.
bool HasText(const MailMessage& message, const Part& part) {
  constexpr std::uint64_t kFew = 16;  // bytes
  if (part.marker != Marker::kBody || (part.type != "text/html" && part.type != "text/plain")) return false;
  if (part.source.bytes.size() > kFew) return true;
  const auto text = message.TextOf(part);
  return !text || !platform::Trim(*text).empty();
}

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

class Writer {
 public:
  Writer(const MailMessage& message, ChosenFolder& folder, const BodyFolderOptions& options)
      : message_(message), folder_(folder), options_(options), embedded_(message) {}

  Result<BodyFolder> Run() {
    const auto body = BodyAsHtml(message_);
    if (!body) return body.error();
    html::SafePageOptions safe;
    safe.forbids_loading = options_.forbids_loading;
    safe.picture = [this](std::string_view address) { return Picture(address); };
    const std::string page = html::SafePage(*body, safe);
    if (options_.cancel != nullptr && options_.cancel->Requested() != platform::Stop::kNone)
      return Error{Failure::kTryAgain, "Writing the body was cancelled."};
    auto name = folder_.WriteNew(options_.page_name, [&](int fd, const std::filesystem::path& file) {
      return platform::WriteAll(fd, file, page);
    });
    if (!name) return name.error();
    out_.page = *std::move(name);
    return std::move(out_);
  }

 private:
  // The same picture is written once, however often it is shown.
  std::optional<std::string> Picture(std::string_view address) {
    const Part* const part = embedded_.Find(address);
    const auto [known, is_new] = names_.try_emplace(part != nullptr ? part->content_id : std::string(address));
    if (is_new) known->second = part != nullptr ? WriteEmbedded(*part) : WriteData(address);
    return known->second.empty() ? std::nullopt : std::optional(platform::PercentEncoded(known->second));
  }

  std::string WriteEmbedded(const Part& part) {
    const std::string type = embedded_.PictureTypeOf(part);
    if (type.empty()) return {};
    return Write(PictureName(part, embedded_.PlaceOf(part), type), [&](int fd, const std::filesystem::path& file) {
      return WritePart(message_, part, fd, file, options_.cancel);
    });
  }

  std::string WriteData(std::string_view address) {
    const auto picture = PictureInAddress(address);
    if (!picture) return {};
    return Write("picture" + std::string(EndingOfType(picture->type)), [&](int fd, const std::filesystem::path& file) {
      return platform::WriteAll(fd, file, picture->bytes);
    });
  }

  std::string Write(const std::string& wanted,
                    const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write) {
    const auto name = folder_.WriteNew(wanted, write);
    (name ? out_.pictures.push_back(*name) : out_.failures.push_back(name.error()));
    return name ? *name : std::string();
  }

  const MailMessage& message_;
  ChosenFolder& folder_;
  const BodyFolderOptions& options_;
  EmbeddedParts embedded_;
  std::unordered_map<std::string, std::string> names_;  // by Content-ID, else by address
  BodyFolder out_;
};

}  // namespace

Result<BodyFolder> WriteBodyFolder(const MailMessage& message, ChosenFolder& folder, const BodyFolderOptions& options) {
  return WithinMemory([&] { return Writer(message, folder, options).Run(); });
}

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

Result<std::string> BodyAsHtml(const MailMessage& message) {
  if (HasPage(message)) return message.HtmlBody();
  return WithinMemory([&]() -> Result<std::string> {
    const auto text = message.TextBody();
    if (!text) return text.error();
    return html::PageOfText(*text);
  });
}

std::optional<Error> WhyNoBody(const MailMessage& message) {
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

Result<void> WritePart(const MailMessage& message, const Part& part, int fd, const std::filesystem::path& file,
                       const platform::CancelToken* cancel) {
  auto reader = message.Open(part);
  if (!reader) return reader.error();
  for (;;) {
    if (cancel != nullptr && cancel->Requested() != platform::Stop::kNone)
      return Error{Failure::kTryAgain, Say("Writing \"{}\" was cancelled.", platform::Printable(file.string()))};
    const auto block = reader->Next();
    if (!block) return block.error();
    if (block->empty()) return {};
    if (auto written = platform::WriteAll(fd, file, *block); !written) return written;
  }
}

EmbeddedParts::EmbeddedParts(const MailMessage& message) : message_(message) {
  for (const Part& part : message.parts()) {
    if (part.message == kNoPart && !part.content_id.empty()) places_.try_emplace(part.content_id, PlaceOf(part));
  }
}

const Part* EmbeddedParts::Find(std::string_view address) const {
  address = platform::Trim(address);
  if (!platform::StartsWithIgnoringAsciiCase(address, "cid:")) return nullptr;
  const auto id = platform::PercentDecoded(address.substr(4));
  const auto place = id ? places_.find(*id) : places_.end();
  return place == places_.end() ? nullptr : &message_.parts()[place->second];
}

std::string EmbeddedParts::PictureTypeOf(const Part& part) const {
  auto reader = message_.Open(part);
  if (!reader) return {};
  const auto first = reader->Next();
  const std::string_view type = first ? document::PictureType(*first) : std::string_view();
  return type == "image/svg+xml" ? std::string() : std::string(type);
}

}  // namespace quillcast::mail_file

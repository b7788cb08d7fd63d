#include "mail_file/shown_body.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "html/safe_page.h"
#include "html/simple_page.h"
#include "mail_file/body_page.h"
#include "mail_file/body_text.h"
#include "mail_file/body_texts.h"
#include "mail_file/data_picture.h"
#include "mail_file/embedded_parts.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint64_t kLongestBody = std::uint64_t{32} << 20;  // bytes as they stand in the file
constexpr std::size_t kBeginning = std::size_t{1} << 20;
constexpr std::size_t kMostPictures = 100;
constexpr std::size_t kMostPictureBytes = std::size_t{64} << 20;

bool IsCancelled(const platform::CancelToken* cancel) {
  return cancel != nullptr && cancel->Requested() != platform::Stop::kNone;
}

// Up to about `most` bytes of a part.
Result<std::string> BytesOf(const MailMessage& message, const Part& part, std::size_t most,
                            const platform::CancelToken* cancel) {
  auto reader = message.Open(part);
  if (!reader) return reader.error();
  std::string bytes;
  while (bytes.size() < most) {
    if (IsCancelled(cancel)) return Error{Failure::kTryAgain, "Reading the message was cancelled."};
    const auto block = reader->Next();
    if (!block) return block.error();
    if (block->empty()) break;
    bytes += *block;
  }
  return bytes;
}

// Cut at the end of a line, so that no character is.
Result<std::string> BeginningOf(const MailMessage& message, const Part& part, const platform::CancelToken* cancel) {
  auto bytes = BytesOf(message, part, kBeginning, cancel);
  if (!bytes) return bytes;
  if (const std::size_t end = bytes->rfind('\n'); end != std::string::npos) bytes->resize(end + 1);
  const bool is_html = part.type == "text/html";
  std::string text = DecodeBody(*bytes, part.charset, is_html);
  if (!is_html) return html::PageOfText(text);
  EmbeddedParts::Used used;
  return EmbeddedParts(message).WithAddresses(part, text, used);
}

// The pictures of a page, each once.
class Pictures {
 public:
  Pictures(const MailMessage& message, const platform::CancelToken* cancel)
      : message_(message), cancel_(cancel), embedded_(message) {}

  std::optional<std::string> Take(std::string_view address) {
    const Part* const part = embedded_.Find(address);
    const auto [place, is_new] =
        places_.try_emplace(part != nullptr ? embedded_.AddressOf(*part) : std::string(address), taken_.size());
    if (is_new && !(part != nullptr ? Read(*part) : ReadData(address))) place->second = kNoPart;
    if (place->second == kNoPart) return std::nullopt;
    return fmt::format("cid:{}", place->second);
  }

  std::size_t left_out() const { return left_out_; }
  std::vector<ShownPicture> taken() && { return std::move(taken_); }

 private:
  bool Read(const Part& part) {
    std::string type = embedded_.PictureTypeOf(part);
    if (type.empty()) return false;
    const std::size_t room = kMostPictureBytes - bytes_;
    const bool may_fit = taken_.size() < kMostPictures && part.source.bytes.size() <= 2 * room;
    auto bytes = may_fit ? BytesOf(message_, part, room + 1, cancel_) : Result<std::string>("");
    if (!may_fit || !bytes) return LeaveOut();
    return Keep({std::move(type), *std::move(bytes)});
  }

  bool ReadData(std::string_view address) {
    auto picture = PictureInAddress(address);
    return picture && Keep({std::move(picture->type), std::move(picture->bytes)});
  }

  bool Keep(ShownPicture picture) {
    if (taken_.size() == kMostPictures || picture.bytes.size() > kMostPictureBytes - bytes_) return LeaveOut();
    bytes_ += picture.bytes.size();
    taken_.push_back(std::move(picture));
    return true;
  }

  bool LeaveOut() {
    ++left_out_;
    return false;
  }

  const MailMessage& message_;
  const platform::CancelToken* cancel_;
  EmbeddedParts embedded_;
  std::unordered_map<std::string, std::size_t> places_;  // by address
  std::vector<ShownPicture> taken_;
  std::size_t bytes_ = 0;
  std::size_t left_out_ = 0;
};

// The body as HTML; only its beginning where it is too long to be held.
Result<std::string> HtmlOf(const MailMessage& message, const platform::CancelToken* cancel, bool& is_cut) {
  const std::string_view type = HasPage(message) ? "text/html" : "text/plain";
  const Part* first = nullptr;
  std::uint64_t size = 0;
  for (const Part* part : BodyParts(message, type)) {
    if (first == nullptr && part->type == type) first = part;
    size += part->source.bytes.size();
  }
  is_cut = first != nullptr && size > kLongestBody;
  return is_cut ? BeginningOf(message, *first, cancel) : BodyAsHtml(message);
}

}  // namespace

Result<ShownBody> ReadShownBody(const MailMessage& message, std::size_t most, const platform::CancelToken* cancel) {
  ShownBody body;
  const auto html = HtmlOf(message, cancel, body.is_cut);
  if (!html) return html.error();
  Pictures pictures(message, cancel);
  html::SafePageOptions safe;
  safe.picture = [&](std::string_view address) { return pictures.Take(address); };
  html::SimplePage simple = html::Simplify(html::SafePage(*html, safe), most);
  if (IsCancelled(cancel)) return Error{Failure::kTryAgain, "Reading the message was cancelled."};
  body.html = std::move(simple.html);
  body.is_cut = body.is_cut || simple.is_cut;
  body.pictures_left_out = pictures.left_out() + simple.pictures_left_out;
  body.pictures = std::move(pictures).taken();
  return body;
}

}  // namespace quillcast::mail_file

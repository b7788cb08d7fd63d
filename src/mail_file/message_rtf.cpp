#include "mail_file/message_rtf.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <unordered_map>

#include "html/html_to_rtf.h"
#include "html/rtf_body.h"
#include "mail_file/body_page.h"
#include "mail_file/embedded_parts.h"
#include "mail_file/picture_pixels.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint64_t kSmallPictures = std::uint64_t{4} * 1024 * 1024;  // bytes that are always written
constexpr std::size_t kBitmapFileHeader = 14;                             // bytes before what RTF calls a bitmap

struct KindRow {
  std::string_view type;
  std::string_view word;
};
constexpr std::array kKinds = {KindRow{"image/png", "\\pngblip"}, KindRow{"image/jpeg", "\\jpegblip"},
                               KindRow{"image/bmp", "\\dibitmap0"}};

struct Picture {
  const Part* part = nullptr;
  std::string_view word;
  std::optional<html::RtfPictureSize> pixels;  // none: it cannot be shown
};

void AppendHexadecimal(std::string& out, std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    out += kDigits[byte >> 4];
    out += kDigits[byte & 15];
    if (i % 64 == 63) out += '\n';
  }
}

class Writer {
 public:
  Writer(const MailMessage& message, const WriteText& write) : message_(message), write_(write), embedded_(message) {
    for (const Part& part : message.parts()) room_ += part.holds_parts ? 0 : 2 * part.source.bytes.size();
  }

  Result<void> Run() {
    const auto page = BodyAsHtml(message_);
    if (!page) return page.error();
    const html::RtfPage rtf = html::HtmlToRtf(*page, [this](std::string_view address) { return SizeOf(address); });
    for (std::string_view rest = rtf.text; !rest.empty();) {
      const std::size_t mark = std::min(rest.find(html::RtfBody::kPictureMark), rest.size());
      if (auto written = write_(rest.substr(0, mark)); !written) return written;
      if (mark == rest.size()) break;
      const std::size_t end = rest.find(html::RtfBody::kPictureMark, mark + 1);
      const auto& shown = rtf.pictures[std::stoul(std::string(rest.substr(mark + 1, end - mark - 1)))];
      if (auto written = WritePicture(Known(shown.address), shown.twips); !written) return written;
      rest.remove_prefix(end + 1);
    }
    return {};
  }

 private:
  std::optional<html::RtfPictureSize> SizeOf(std::string_view address) {
    const Picture& picture = Known(address);
    if (!picture.pixels || room_ < picture.part->source.bytes.size()) return {};
    room_ -= picture.part->source.bytes.size();
    return picture.pixels;
  }

  const Picture& Known(std::string_view address) {
    const Part* const part = embedded_.Find(address);
    const auto [known, is_new] = pictures_.try_emplace(part);
    if (is_new && part != nullptr) known->second = LookAt(*part);
    return known->second;
  }

  Picture LookAt(const Part& part) const {
    const std::string type = embedded_.PictureTypeOf(part);
    const auto* const kind = std::ranges::find(kKinds, std::string_view(type), &KindRow::type);
    auto reader = message_.Open(part);
    if (kind == kKinds.end() || !reader) return {};
    std::string head;
    while (head.size() < kPictureHead) {
      const auto block = reader->Next();
      if (!block || block->empty()) break;
      head += *block;
    }
    return {&part, kind->word, PixelsOf(head)};
  }

  Result<void> WritePicture(const Picture& picture, html::RtfPictureSize twips) {
    const std::string head = fmt::format("{{\\pict{}\\picw{}\\pich{}\\picwgoal{}\\pichgoal{}\n", picture.word,
                                         picture.pixels->width, picture.pixels->height, twips.width, twips.height);
    if (auto written = write_(head); !written) return written;
    auto reader = message_.Open(*picture.part);
    if (!reader) return reader.error();
    std::size_t skipped = picture.word == kKinds.back().word ? kBitmapFileHeader : 0;
    std::string digits;
    for (;;) {
      auto block = reader->Next();
      if (!block) return block.error();
      if (block->empty()) return write_("}");
      const std::size_t skip = std::min(skipped, block->size());
      skipped -= skip;
      digits.clear();
      AppendHexadecimal(digits, block->substr(skip));
      if (auto written = write_(digits); !written) return written;
    }
  }

  const MailMessage& message_;
  const WriteText& write_;
  EmbeddedParts embedded_;
  std::unordered_map<const Part*, Picture> pictures_;
  std::uint64_t room_ = kSmallPictures;
};

}  // namespace

Result<void> WriteAsRtf(const MailMessage& message, const WriteText& write) { return Writer(message, write).Run(); }

}  // namespace quillcast::mail_file

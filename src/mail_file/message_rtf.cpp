#include "mail_file/message_rtf.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <unordered_map>

#include "html/html_to_rtf.h"
#include "html/rtf_body.h"
#include "mail_file/body_page.h"
#include "mail_file/data_picture.h"
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
  const Part* part = nullptr;  // none: it lies in its address
  std::uint64_t size = 0;      // about, in bytes
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

class RtfWriter {
 public:
  RtfWriter(const MailMessage& message, const WriteText& write) : message_(message), write_(write), embedded_(message) {
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
      if (auto written = WritePicture(shown.address, shown.twips); !written) return written;
      rest.remove_prefix(end + 1);
    }
    return {};
  }

 private:
  std::optional<html::RtfPictureSize> SizeOf(std::string_view address) {
    const Picture picture = Known(address);
    if (!picture.pixels || room_ < picture.size) return {};
    room_ -= picture.size;
    return picture.pixels;
  }

  Picture Known(std::string_view address) {
    const Part* const part = embedded_.Find(address);
    if (part == nullptr) return LookAtAddress(address);
    const auto [known, is_new] = pictures_.try_emplace(part);
    if (is_new) known->second = LookAt(*part);
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
    return {&part, part.source.bytes.size(), kind->word, PixelsOf(head)};
  }

  static Picture LookAtAddress(std::string_view address) {
    const auto data = PictureInAddress(address);
    if (!data) return {};
    const auto* const kind = std::ranges::find(kKinds, std::string_view(data->type), &KindRow::type);
    if (kind == kKinds.end()) return {};
    return {nullptr, data->bytes.size(), kind->word, PixelsOf(std::string_view(data->bytes).substr(0, kPictureHead))};
  }

  Result<void> WritePicture(std::string_view address, html::RtfPictureSize twips) {
    const Picture picture = Known(address);
    const std::string head = fmt::format("{{\\pict{}\\picw{}\\pich{}\\picwgoal{}\\pichgoal{}\n", picture.word,
                                         picture.pixels->width, picture.pixels->height, twips.width, twips.height);
    if (auto written = write_(head); !written) return written;
    std::size_t skipped = picture.word == kKinds.back().word ? kBitmapFileHeader : 0;
    const auto write = [&](std::string_view block) {
      const std::size_t skip = std::min(skipped, block.size());
      skipped -= skip;
      std::string digits;
      AppendHexadecimal(digits, block.substr(skip));
      return write_(digits);
    };
    auto written = picture.part != nullptr ? WritePart(*picture.part, write) : WriteAddress(address, write);
    return written ? write_("}") : written;
  }

  Result<void> WritePart(const Part& part, const WriteText& write) const {
    auto reader = message_.Open(part);
    if (!reader) return reader.error();
    for (;;) {
      auto block = reader->Next();
      if (!block) return block.error();
      if (block->empty()) return {};
      if (auto written = write(*block); !written) return written;
    }
  }

  static Result<void> WriteAddress(std::string_view address, const WriteText& write) {
    constexpr std::size_t kBlock = std::size_t{64} * 1024;
    const auto data = PictureInAddress(address);
    for (std::string_view rest = data ? std::string_view(data->bytes) : std::string_view(); !rest.empty();) {
      const std::string_view block = rest.substr(0, kBlock);
      if (auto written = write(block); !written) return written;
      rest.remove_prefix(block.size());
    }
    return {};
  }

  const MailMessage& message_;
  const WriteText& write_;
  EmbeddedParts embedded_;
  std::unordered_map<const Part*, Picture> pictures_;
  std::uint64_t room_ = kSmallPictures;
};

}  // namespace

Result<void> WriteAsRtf(const MailMessage& message, const WriteText& write) { return RtfWriter(message, write).Run(); }

}  // namespace quillcast::mail_file

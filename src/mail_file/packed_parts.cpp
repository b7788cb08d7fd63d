#include "mail_file/packed_parts.h"

#include "mail_file/inline_files.h"
#include "mail_file/part_reader.h"
#include "mail_file/tnef.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

bool IsBinHex(const Part& part) {
  return part.type == "application/mac-binhex40" || part.encoding.find("binhex") != std::string::npos;
}

bool IsTnef(const Part& part) {
  return part.type == "application/ms-tnef" || part.type == "application/vnd.ms-tnef" ||
         platform::EqualsIgnoringAsciiCase(part.name, "winmail.dat");
}

void RefuseUnknown(FoundFiles& found, Part& part) {
  found.faults.Add(LoadCode::kUnknownEncoding, Say("The part at byte {} is encoded by \"{}\".", part.header.begin,
                                                   platform::Printable(part.encoding, 100)));
  if (found.mode == LoadMode::kExtended) {
    part.source.encoding = TransferEncoding::kIdentity;
    return;
  }
  const bool is_yenc = part.encoding == "yenc" || part.encoding == "x-yenc";
  part.refused = is_yenc ? "yEnc" : part.encoding;
}

Result<void> UnpackBinHex(FoundFiles& found, std::size_t place) {
  PartSource source = found.parts[place].source;
  source.unpacking = Unpacking::kBinHexData;
  auto looked = LookAtBinHex(found, source);
  if (!looked) return looked.error();
  if (!looked->is_used) return {};
  Part& part = found.parts[place];
  part.source = std::move(source);
  if (part.name.empty() || platform::AsciiLower(part.name).ends_with(".hqx")) part.name = std::move(looked->name);
  return {};
}

Result<void> UnpackUuencoded(FoundFiles& found, Part& part) {
  auto begin = FindUuencoded(*found.file, part.source.bytes);
  if (!begin) return begin.error();
  if (!*begin) return {};
  part.source.bytes.begin = (*begin)->begin;
  if (part.name.empty()) part.name = std::move((*begin)->name);
  return {};
}

Result<void> Unpack(FoundFiles& found, std::size_t place) {
  Part& part = found.parts[place];
  if (part.source.encoding == TransferEncoding::kUnknown) {
    RefuseUnknown(found, part);
    return {};
  }
  if (part.source.encoding == TransferEncoding::kUuencode) return UnpackUuencoded(found, part);
  if (IsBinHex(part)) return UnpackBinHex(found, place);
  if (IsTnef(part)) return UnpackTnef(found, place);
  return UnpackText(found, place);
}

}  // namespace

Result<BinHexLook> LookAtBinHex(FoundFiles& found, const PartSource& source) {
  PartSource encoded = source;
  encoded.unpacking = Unpacking::kNone;
  PartReader reader(found.file, encoded);
  BinHexDecoder decoder;
  std::string out;
  for (;;) {
    if (found.is_cancelled()) return Error{Failure::kTryAgain, "Reading the message was cancelled."};
    const auto block = reader.Next();
    if (!block) return block.error();
    if (block->empty()) break;
    decoder.Decode(*block, out);
    out.clear();
  }
  BinHexLook look;
  if (const auto name = ConvertToUtf8(decoder.name(), "macintosh")) look.name = name->text;
  const LoadCode verdict = decoder.Verdict();
  look.is_used = verdict == LoadCode::kLoaded || found.mode == LoadMode::kExtended;
  if (verdict != LoadCode::kLoaded)
    found.faults.Add(verdict, Say("The BinHex file at byte {} is damaged.", source.bytes.begin));
  return look;
}

Result<void> UnpackText(FoundFiles& found, std::size_t place) {
  const Part& part = found.parts[place];
  const bool is_encoded = part.source.encoding == TransferEncoding::kUnknown ||
                          part.source.encoding == TransferEncoding::kUuencode || IsBinHex(part) || IsTnef(part);
  if (is_encoded || part.type != "text/plain" || part.marker != Marker::kBody) return {};
  return FindInlineFiles(found, place);
}

Result<void> UnpackParts(FoundFiles& found) {
  const std::size_t count = found.parts.size();
  for (std::size_t place = 0; place < count; ++place) {
    if (found.parts[place].holds_parts) continue;
    if (auto unpacked = Unpack(found, place); !unpacked) return unpacked;
  }
  return {};
}

}  // namespace quillcast::mail_file

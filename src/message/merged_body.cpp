#include "message/merged_body.h"

#include "mime/header_text.h"

namespace quillcast::message {
namespace {

std::string Ended(std::string text) {
  if (!text.ends_with('\n')) text += '\n';
  return text;
}

// The pieces from `first` on, made quoted-printable.
void EncodePieces(RenderedPieces& out, std::size_t first) {
  std::string bytes;
  for (std::size_t i = first; i < out.count(); ++i) bytes += out.At(i);
  out.CutBack(first);
  QuotedPrintableStream stream;
  stream.Add(bytes, out);
  stream.Finish(out);
}

}  // namespace

MergedBody::MergedBody(std::string text, const BodyStyle& style) : source_(Ended(std::move(text))), style_(style) {
  for (const auto& piece : source_.pieces()) {
    holds_text_ = holds_text_ && mime::CanEncode(style_.charset, piece.literal);
  }
  if (style_.encoding == TransferEncoding::kBase64) {
    compiled_ = Compile<Base64Stream>();
  } else if (style_.encoding == TransferEncoding::kNone) {
    MergedLines lines(source_, style_);
    if (NeverFits(lines)) {
      compiled_ = Compile<QuotedPrintableStream>();
    } else {
      compiled_ = std::move(lines);
    }
  } else {
    compiled_ = Compile<QuotedPrintableStream>();
  }
}

// Lines that are too long without values stay so with them. Wrapped bodies are encoded, where they must be, as they
// were wrapped.
bool MergedBody::NeverFits(const MergedLines& lines) const {
  if (style_.wrap > 0 || style_.is_bare) return false;
  RenderedPieces pieces;
  return !lines.Render({}, pieces).Fits();
}

template <typename Stream>
MergedBody::Encoded<Stream> MergedBody::Compile() {
  Encoded<Stream> encoded;
  const auto& pieces = source_.pieces();
  if (pieces.front().field >= 0) encoded.pieces.push_back({Stream::Prepare(style_.start, true), -1});
  for (const auto& piece : pieces) {
    const bool is_first = encoded.pieces.empty();
    std::string bytes(is_first ? style_.start : std::string_view());
    bytes += style_.InCharset(piece.literal);
    encoded.pieces.push_back({Stream::Prepare(bytes, is_first), piece.field});
  }
  return encoded;
}

bool MergedBody::CanHold(const document::MergeValues& values) const {
  if (!holds_text_) return false;
  const bool values_may_hold_tags = !source_.OnePassHolds(values);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if ((source_.used()[i] || values_may_hold_tags) && !mime::CanEncode(style_.charset, values[i])) return false;
  }
  return true;
}

std::optional<WireForm> MergedBody::Render(const document::MergeValues& values, RenderedPieces& out) const {
  std::optional<std::string> merged;
  if (!source_.OnePassHolds(values)) {
    merged = document::ReplaceMergeFields(source_.text(), values);
    if (!merged) return {};
  }
  const std::string* const whole = merged ? &*merged : nullptr;
  if (std::holds_alternative<MergedLines>(compiled_)) return WriteLines(values, whole, out);
  if (const auto* base64 = std::get_if<Base64>(&compiled_)) {
    Write(*base64, values, whole, out);
    return WireForm::kBase64;
  }
  Write(std::get<QuotedPrintable>(compiled_), values, whole, out);
  return WireForm::kQuotedPrintable;
}

template <typename Stream>
void MergedBody::Write(const Encoded<Stream>& encoded, const document::MergeValues& values, const std::string* merged,
                       RenderedPieces& out) const {
  Stream stream;
  if (merged != nullptr) {
    stream.Add(std::string(style_.start) + style_.InCharset(*merged), out);
  } else {
    for (const auto& piece : encoded.pieces) {
      if (piece.field < 0) {
        stream.AddLiteral(piece.literal, out);
      } else {
        stream.Add(style_.InCharset(values[static_cast<std::size_t>(piece.field)]), out);
      }
    }
  }
  stream.Finish(out);
}

WireForm MergedBody::WriteLines(const document::MergeValues& values, const std::string* merged,
                                RenderedPieces& out) const {
  const auto& lines = std::get<MergedLines>(compiled_);
  const std::size_t first = out.count();
  const WireText look = merged != nullptr ? lines.RenderMerged(*merged, out) : lines.Render(values, out);
  if (look.Fits() || style_.is_bare) return look.eight_bit() ? WireForm::kEightBit : WireForm::kSevenBit;
  EncodePieces(out, first);
  return WireForm::kQuotedPrintable;
}

}  // namespace quillcast::message

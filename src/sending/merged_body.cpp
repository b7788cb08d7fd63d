#include "sending/merged_body.h"

#include "mime/header_text.h"
#include "mime/quoted_printable.h"
#include "platform/text.h"

namespace quillcast::sending {
namespace {

std::string Ended(std::string text) {
  if (!text.ends_with('\n')) text += '\n';
  return text;
}

}  // namespace

void RenderedPieces::Clear() {
  personal_.clear();
  pieces_.clear();
  taken_ = 0;
  size_ = 0;
}

void RenderedPieces::AddShared(std::string_view bytes) {
  if (bytes.empty()) return;
  pieces_.push_back({bytes.data(), 0, bytes.size()});
  size_ += bytes.size();
}

void RenderedPieces::EndPersonal() {
  const std::size_t length = personal_.size() - taken_;
  if (length == 0) return;
  pieces_.push_back({nullptr, taken_, length});
  taken_ = personal_.size();
  size_ += length;
}

std::string_view RenderedPieces::At(std::size_t index) const {
  const Piece& piece = pieces_[index];
  return {piece.shared != nullptr ? piece.shared : personal_.data() + piece.offset, piece.length};
}

MergedBody::MergedBody(std::string text, mime::Charset charset, mime::Unmapped unmapped)
    : source_(Ended(std::move(text))), charset_(charset), unmapped_(unmapped) {
  for (const auto& piece : source_.pieces()) {
    EncodedPiece encoded{.bytes = {}, .end_column = 0, .begins_with_break = false, .field = piece.field};
    AppendEncoded(encoded.bytes, piece.literal, encoded.end_column);
    encoded.begins_with_break = encoded.bytes.starts_with("\r\n");
    holds_text_ = holds_text_ && mime::CanEncode(charset_, piece.literal);
    pieces_.push_back(std::move(encoded));
  }
}

bool MergedBody::CanHold(const compose::MergeValues& values) const {
  if (!holds_text_) return false;
  const bool values_may_hold_tags = !source_.OnePassHolds(values);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if ((source_.used()[i] || values_may_hold_tags) && !mime::CanEncode(charset_, values[i])) return false;
  }
  return true;
}

// A value begins where the literal before it ended. A literal was encoded as the beginning of a line, so a soft break
// goes before it unless it begins with a line end of its own.
bool MergedBody::Render(const compose::MergeValues& values, RenderedPieces& out) const {
  std::size_t column = 0;
  if (!source_.OnePassHolds(values)) {
    const auto merged = compose::ReplaceMergeFields(source_.text(), values);
    if (!merged) return false;
    AppendEncoded(out.personal(), *merged, column);
    out.EndPersonal();
    return true;
  }
  for (const EncodedPiece& piece : pieces_) {
    if (piece.field >= 0) {
      AppendEncoded(out.personal(), values[static_cast<std::size_t>(piece.field)], column);
      continue;
    }
    if (column > 0 && !piece.begins_with_break) mime::AppendSoftBreak(out.personal(), column);
    out.EndPersonal();
    out.AddShared(piece.bytes);
    column = piece.end_column;
  }
  out.EndPersonal();
  return true;
}

void MergedBody::AppendEncoded(std::string& out, std::string_view text, std::size_t& column) const {
  std::string with_crlf;
  if (text.find('\n') != std::string_view::npos) text = with_crlf = platform::ReplaceAll(text, "\n", "\r\n");
  std::string in_charset;
  charset_.Encode(text, in_charset, nullptr, unmapped_);
  mime::AppendQuotedPrintable(out, in_charset, column, false);
}

}  // namespace quillcast::sending

#include "message/body_streams.h"

#include <algorithm>

#include "mime/quoted_printable.h"
#include "platform/base64.h"

namespace quillcast::message {
namespace {

constexpr std::size_t kColumns = 76;
constexpr std::size_t kShortLiteral = 57;  // up to here encoding it again costs less than a line break

// Bytes that make whole groups, or the last ones of the body.
void AppendLines(std::string& out, std::string_view bytes, std::size_t& column) {
  while (!bytes.empty()) {
    if (column == kColumns) {
      out += "\r\n";
      column = 0;
    }
    const auto some = bytes.substr(0, (kColumns - column) / 4 * 3);
    platform::AppendBase64(out, some);
    column += (some.size() + 2) / 3 * 4;
    bytes.remove_prefix(some.size());
  }
}

std::size_t WholeGroups(std::string_view bytes) { return bytes.size() / 3 * 3; }

}  // namespace

QuotedPrintableStream::Literal QuotedPrintableStream::Prepare(std::string_view bytes, bool) {
  Literal literal{.lines = {}, .end_column = 0, .begins_with_break = bytes.starts_with("\r\n")};
  mime::AppendQuotedPrintable(literal.lines, bytes, literal.end_column, false);
  return literal;
}

void QuotedPrintableStream::Add(std::string_view bytes, RenderedPieces& out) {
  mime::AppendQuotedPrintable(out.personal(), bytes, column_, false);
}

// A value ends where it ends; the literal behind it was encoded as the beginning of a line.
void QuotedPrintableStream::AddLiteral(const Literal& literal, RenderedPieces& out) {
  if (column_ > 0 && !literal.begins_with_break) mime::AppendSoftBreak(out.personal(), column_);
  out.EndPersonal();
  out.AddShared(literal.lines);
  column_ = literal.end_column;
}

Base64Stream::Literal Base64Stream::Prepare(std::string_view bytes, bool is_first) {
  Literal literal;
  literal.has_forms = bytes.size() > kShortLiteral;
  literal.start = literal.has_forms ? bytes.substr(0, 2) : bytes;
  // Nothing stands before the first literal, so that it is only needed from its beginning on.
  for (std::size_t from = 0; literal.has_forms && from < (is_first ? 1 : literal.forms.size()); ++from) {
    Form& form = literal.forms[from];
    const auto rest = bytes.substr(from);
    AppendLines(form.lines, rest.substr(0, WholeGroups(rest)), form.end_column);
    form.rest = rest.substr(WholeGroups(rest));
  }
  return literal;
}

void Base64Stream::Add(std::string_view bytes, RenderedPieces& out) {
  if (!open_.empty()) {
    const auto some = bytes.substr(0, 3 - open_.size());
    open_ += some;
    bytes.remove_prefix(some.size());
    if (open_.size() < 3) return;
    AppendLines(out.personal(), open_, column_);
  }
  AppendLines(out.personal(), bytes.substr(0, WholeGroups(bytes)), column_);
  open_ = bytes.substr(WholeGroups(bytes));
}

void Base64Stream::AddLiteral(const Literal& literal, RenderedPieces& out) {
  if (!literal.has_forms) return Add(literal.start, out);
  const std::size_t from = open_.empty() ? 0 : 3 - open_.size();
  Add(std::string_view(literal.start).substr(0, from), out);
  if (column_ > 0) out.personal() += "\r\n";
  out.EndPersonal();
  const Form& form = literal.forms[from];
  out.AddShared(form.lines);
  column_ = form.end_column;
  open_ = form.rest;
}

void Base64Stream::Finish(RenderedPieces& out) {
  AppendLines(out.personal(), open_, column_);
  if (column_ > 0) out.personal() += "\r\n";
  out.EndPersonal();
  column_ = 0;
  open_.clear();
}

}  // namespace quillcast::message

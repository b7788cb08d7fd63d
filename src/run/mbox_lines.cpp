#include "run/mbox_lines.h"

#include <algorithm>

namespace quillcast::run {
namespace {

constexpr std::string_view kFrom = "From ";

void AppendWithoutCr(std::string_view bytes, std::string& out) {
  std::copy_if(bytes.begin(), bytes.end(), std::back_inserter(out), [](char c) { return c != '\r'; });
}

}  // namespace

void MboxLines::Append(std::string_view piece, std::string& out) {
  while (!piece.empty()) {
    if (at_beginning_) {
      AppendAtBeginning(piece, out);
      continue;
    }
    const std::size_t size = std::min(piece.find('\n'), piece.size() - 1) + 1;
    AppendWithoutCr(piece.substr(0, size), out);
    at_beginning_ = piece[size - 1] == '\n';
    piece.remove_prefix(size);
  }
}

// Takes one byte while the line can still be any number of ">" and "From ".
void MboxLines::AppendAtBeginning(std::string_view& piece, std::string& out) {
  held_ += piece.front();
  piece.remove_prefix(1);
  const std::string_view rest = std::string_view(held_).substr(std::min(held_.find_first_not_of('>'), held_.size()));
  if (rest != kFrom && kFrom.substr(0, rest.size()) == rest) return;
  if (rest == kFrom) out += '>';
  AppendWithoutCr(held_, out);
  at_beginning_ = held_.back() == '\n';
  held_.clear();
}

void MboxLines::End(std::string& out) {
  AppendWithoutCr(held_, out);
  if (!held_.empty() || !at_beginning_) out += '\n';
  out += '\n';
  held_.clear();
  at_beginning_ = true;
}

}  // namespace quillcast::run

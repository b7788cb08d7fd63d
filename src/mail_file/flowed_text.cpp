#include "mail_file/flowed_text.h"

#include <algorithm>

namespace quillcast::mail_file {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kSignatureLine = "-- ";

struct Line {
  std::size_t depth = 0;  // of quotation
  std::string_view text;
  bool goes_on = false;
};

Line ReadLine(std::string_view line) {
  const std::size_t depth = std::min(line.find_first_not_of('>'), line.size());
  line.remove_prefix(depth);
  if (line.starts_with(' ')) line.remove_prefix(1);  // which keeps a ">" or a "From" that is the text's own
  return {depth, line, line.ends_with(' ') && line != kSignatureLine};
}

}  // namespace

std::string Unflowed(std::string_view text, Flow flow) {
  std::string out;
  out.reserve(text.size());
  bool is_open = false;
  std::size_t depth = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(kLineEnd), text.size());
    Line line = ReadLine(text.substr(0, end));
    const bool has_end = end < text.size();
    text.remove_prefix(has_end ? end + kLineEnd.size() : end);
    // An empty line is a paragraph's end to whoever wrote a blank before it.
    if (is_open && (line.depth != depth || line.text == kSignatureLine || line.text.empty())) {
      out += kLineEnd;
      is_open = false;
    }
    if (!is_open) {
      out.append(line.depth, '>');
      if (line.depth > 0 && !line.text.empty()) out += ' ';
    }
    is_open = line.goes_on;
    depth = line.depth;
    if (line.goes_on && flow == Flow::kFlowedDelSp) line.text.remove_suffix(1);
    out += line.text;
    if (has_end && !is_open) out += kLineEnd;
  }
  if (is_open) out += kLineEnd;
  return out;
}

}  // namespace quillcast::mail_file

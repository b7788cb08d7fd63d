#include "message/message_layout.h"

namespace quillcast::message {

void MessageLayout::Add(Place place) {
  segments_.push_back({place, {}});
  ends_line_ = false;
}

void MessageLayout::AddFile(std::size_t file, bool ends_line) {
  segments_.push_back({Place::kFile, {}, file});
  ends_line_ = ends_line;
}

void MessageLayout::AddBytes(std::string_view bytes) {
  if (segments_.empty() || segments_.back().place != Place::kBytes) segments_.push_back({Place::kBytes, {}});
  segments_.back().bytes += bytes;
}

void MessageLayout::BeginMultipart(std::string_view type, std::string_view boundary) {
  AddBytes("Content-Type: multipart/");
  AddBytes(type);
  AddBytes(";\r\n boundary=\"");
  AddBoundary(boundary);
  AddBytes("\"\r\n");
  Add(Place::kEncoding);
  AddDelimiter(boundary, "\r\n");
}

void MessageLayout::NextPart(std::string_view boundary) { AddDelimiter(boundary, "\r\n"); }

void MessageLayout::EndMultipart(std::string_view boundary) {
  AddDelimiter(boundary, "--\r\n");
  ends_line_ = true;
}

// The line end before the hyphens belongs to the delimiter (RFC 2046 5.1.1), so that a part that stands as it is ends
// where its content ends.
void MessageLayout::AddDelimiter(std::string_view boundary, std::string_view end) {
  AddBytes(ends_line_ ? "--" : "\r\n--");
  AddBoundary(boundary);
  AddBytes(end);
}

void MessageLayout::AddBoundary(std::string_view boundary) {
  if (personal_prefix_) segments_.push_back({Place::kPrefix, {}});
  AddBytes(boundary);
}

}  // namespace quillcast::message

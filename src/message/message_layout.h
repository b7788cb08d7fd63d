// The order of what stands in a message, the same for every recipient: bytes between the places of what is not.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillcast::message {

// Built once a run and walked through for each message. Delimiters are bytes in it like any others.
class MessageLayout {
 public:
  // kEncoding: the Content-Transfer-Encoding of a multipart, which says whether the message has octets above
  // 127.
  enum class Place { kBytes, kPrefix, kEncoding, kText, kHtml, kFile };
  struct Segment {
    Place place;
    std::string bytes;
    std::size_t file = 0;
  };

  // `personal_prefix` says that boundaries begin with a prefix that is each message's own.
  explicit MessageLayout(bool personal_prefix) : personal_prefix_(personal_prefix) {}

  // Goes on in the segment before where that is bytes too: fewer segments are fewer pieces in each message.
  void AddBytes(std::string_view bytes);
  void AddText() { Add(Place::kText); }
  void AddHtml() { Add(Place::kHtml); }
  // `ends_line` says that the line end behind it is no part of the file, but the beginning of the next delimiter.
  void AddFile(std::size_t file, bool ends_line);

  // `boundary` is what stands behind the prefix. Begin takes the header of the multipart and its first delimiter.
  void BeginMultipart(std::string_view type, std::string_view boundary);
  void NextPart(std::string_view boundary);
  void EndMultipart(std::string_view boundary);

  // In the order of the message. `bytes` belongs to kBytes, `file` (a number of EncodedFiles) to kFile.
  const std::vector<Segment>& segments() const { return segments_; }

 private:
  void Add(Place place);
  void AddDelimiter(std::string_view boundary, std::string_view end);
  void AddBoundary(std::string_view boundary);

  bool personal_prefix_;
  bool ends_line_ = false;
  std::vector<Segment> segments_;
};

}  // namespace quillcast::message

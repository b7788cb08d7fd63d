// Where a message's files come from: the places that its document names, or what somebody kept of them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "document/message_document.h"
#include "document/picture_places.h"
#include "message/encoded_files.h"
#include "platform/file.h"

namespace quillcast::message {

struct Picture {
  std::filesystem::path file;
  std::string content_id;  // without angle brackets
  std::string media_type;  // by its content
  std::uint64_t size = 0;  // octets
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
};

// A picture that lies where the document may not take pictures from (document::PicturePlaces). Its name stays.
struct ForeignPicture {
  std::filesystem::path file;  // links resolved
  bool left_out = false;       // the person was asked, and said so
};

// A local reference that was not taken along; its name is all that is left of it in the message, unless another
// program fills it in on the way.
struct PictureTrouble {
  std::string file;
  std::int32_t code;  // of loading the body, see body_import.h
  bool is_filled_in = false;
};

// What a reference of the HTML leads to. A picture has no Content-ID yet.
using FoundPicture = std::variant<Picture, ForeignPicture, PictureTrouble>;
// At its beginning; or why no message can go out.
using OpenedFile = std::variant<platform::UniqueFd, FileTrouble>;

class FileSource {
 public:
  virtual ~FileSource() = default;
  // An attachment, by its path in the document.
  virtual OpenedFile OpenAttachment(const std::filesystem::path& file) const = 0;
  // `file` is absolute, and names no "." and no "..".
  virtual FoundPicture FindPicture(const std::filesystem::path& file) const = 0;
  // One that was found. Pictures are not kept open: a page may have more of them than a process may have descriptors.
  virtual OpenedFile OpenPicture(const Picture& picture) const = 0;
};

// The files as they lie there now. A page from elsewhere must not be able to make a person send a file of theirs: only
// what is a picture by its content and lies where the document may take pictures from is one. Only regular files are
// opened.
class DocumentFiles final : public FileSource {
 public:
  explicit DocumentFiles(const document::MessageDocument& document);

  OpenedFile OpenAttachment(const std::filesystem::path& file) const override;
  FoundPicture FindPicture(const std::filesystem::path& file) const override;
  // Fails when the file has gone, or is another one than was found.
  OpenedFile OpenPicture(const Picture& picture) const override;

 private:
  document::PicturePlaces places_;
  std::vector<std::filesystem::path> folders_;  // of those, without links
};

}  // namespace quillcast::message

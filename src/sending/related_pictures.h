// The local pictures of an HTML body, taken along under Content-IDs.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file.h"
#include "platform/result.h"

namespace quillcast::sending {

struct Picture {
  std::filesystem::path file;
  std::string content_id;  // without angle brackets
  std::string media_type;  // by its content
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
};

// The file, at its beginning. Pictures are not kept open: a page may have more of them than a process may have
// descriptors. Fails when the file has gone, or is another one than was looked at.
Result<platform::UniqueFd> OpenAgain(const Picture& picture);

// A local reference that was not taken along; it stays as it is.
struct PictureTrouble {
  std::string file;
  std::int32_t code;  // of loading the body, see send_status.h
};

// A sentence for the person.
std::string Describe(const PictureTrouble& trouble);

struct RelatedPictures {
  std::string html;                      // with "cid:" references
  std::vector<Picture> pictures;         // each file once
  std::vector<PictureTrouble> troubles;  // each file once, in the order of the HTML
};

// References are relative to `base_folder`. Only what is a picture by its content is taken: a page from elsewhere must
// not be able to make a person send a file of theirs.
RelatedPictures TakePictures(std::string_view html, const std::filesystem::path& base_folder,
                             std::string_view content_id_suffix);

}  // namespace quillcast::sending

// The local pictures of an HTML body, taken along under Content-IDs.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file.h"

namespace quillcast::sending {

struct Picture {
  std::filesystem::path file;
  platform::UniqueFd fd;   // open from the moment it was looked at
  std::string content_id;  // without angle brackets
  std::string media_type;  // by its content
};

struct RelatedPictures {
  std::string html;               // with "cid:" references
  std::vector<Picture> pictures;  // each file once
  std::vector<std::string>
      missing;  // references whose file is missing, not readable or no picture; they stay as they are
};

// References are relative to `base_folder`. Only what is a picture by its content is taken: a page from elsewhere must
// not be able to make a person send a file of theirs.
RelatedPictures TakePictures(std::string_view html, const std::filesystem::path& base_folder,
                             std::string_view content_id_suffix);

}  // namespace quillcast::sending

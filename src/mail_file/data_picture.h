// A picture that lies in its own address.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillcast::mail_file {

struct DataPicture {
  std::string type;   // the media type, by its content
  std::string bytes;  // of the picture's file
};

// Of "data:image/png;base64,iVBORw0…" (RFC 2397), as a page writes it. Nothing for any other address, for what is no
// picture whatever it calls itself, and for drawings (SVG).
std::optional<DataPicture> PictureInAddress(std::string_view address);

}  // namespace quillcast::mail_file

// A picture file on its way into a message: looked at, turned upright, made smaller, and copied. Takes a second for a
// large photograph, so it runs beside the window.
#pragma once

#include <QByteArray>
#include <QImage>
#include <cstdint>
#include <filesystem>
#include <string>

#include "platform/result.h"
#include "profile/min_win_size.h"

namespace quillcast::desktop {

// For the dialog in which one is picked.
inline constexpr const char* kPictureFilter =
    "Pictures (*.png;*.jpg;*.jpeg;*.gif;*.webp;*.bmp)|*.png;*.jpg;*.jpeg;*.gif;*.webp;*.bmp|All Files (*.*)|*.*";

// What can be known of a file without decoding it.
struct PictureHead {
  std::filesystem::path file;
  profile::PixelSize size = {};  // upright
  std::uint64_t bytes = 0;
  bool lies_turned = false;  // the camera noted how it was held: many mail programs do not look at that
  bool moves = false;        // is an animation: kept as it is
  bool is_large() const;     // see IsLargePhotograph
};

struct PictureLook {
  PictureHead head;
  QImage shown;             // upright, for a window
  QByteArray smaller = {};  // the file of the smaller one; empty where none is offered
  profile::PixelSize smaller_size = {};
};

// The kinds that mail programs show. A pipe or a folder is never opened, and a file that is too long or has too many
// pixels not decoded.
Result<PictureHead> ReadPictureHead(const std::filesystem::path& file);

// The same and the pixels: fails for a file that is cut short or broken, too.
Result<PictureLook> LookAtPicture(const std::filesystem::path& file);

// The copy in the folder: the file as it is, or upright, or the smaller one.
Result<std::filesystem::path> KeepPicture(const PictureHead& head, const std::filesystem::path& folder);
Result<std::filesystem::path> KeepSmaller(const PictureLook& look, const std::filesystem::path& folder);

}  // namespace quillcast::desktop

// The pictures that a document takes along when it is saved. Those of a message that was imported as the body lie in a
// folder that goes when the program ends.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "document/picture_places.h"
#include "platform/cancel.h"
#include "platform/result.h"

namespace quillcast::document {

// The names of the copies, by their originals.
using TakenPictures = std::map<std::filesystem::path, std::string>;

// Copies the files that the HTML would lose when it is saved as `target` into the folder "NAME_files" beside that, NAME
// being its name without ending, and gives the HTML that refers to them there: those below `import_folder`, and, where
// `target` is in another folder than `base`, those of relative references, which start from there. `base` may be empty.
// `taken` goes from one save to the next: a copy outlives its original. A file of another document is not written over.
// A picture that is missing keeps its reference. One that does not lie in `places` is not copied, for it would lie in
// the document's own folder then: a relative reference to it becomes an absolute one, which names the same file. Fails
// when a file cannot be copied.
Result<std::string> TakePicturesAlong(std::string_view html, const std::filesystem::path& base,
                                      const std::filesystem::path& import_folder, const PicturePlaces& places,
                                      const std::filesystem::path& target, TakenPictures& taken);

// The address that names a file of this machine from anywhere.
std::string FileAddress(const std::filesystem::path& file);

// Where copies go, and what the HTML calls that folder, without a "/" at the end.
struct PictureFolder {
  std::filesystem::path folder;
  std::string address;
};

// For HTML that is kept apart from where it came from, at `base`: copies what lies in `places` and is a picture by its
// content, and gives the HTML that names the copies. Another file stays where it is; where its reference is relative,
// it becomes absolute. A request by `cancel`, which may be null, fails it with kTryAgain; copies that are whole by then
// stay.
Result<std::string> CopyPictures(std::string_view html, const std::filesystem::path& base, const PicturePlaces& places,
                                 const PictureFolder& target, const platform::CancelToken* cancel = nullptr);

// The HTML as it can be read from anywhere: relative references to files, which start from `base`, become absolute.
std::string WithAbsolutePictures(std::string_view html, const std::filesystem::path& base);

}  // namespace quillcast::document

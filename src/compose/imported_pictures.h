// The pictures of a message that was imported as the body lie in a folder that goes when the program ends; a document
// that is saved takes them along.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::compose {

// Copies the files below `import_folder` that the HTML refers to into the folder "NAME_files" beside `target`, NAME
// being its name without ending, and gives the HTML that refers to them there. Relative references start from `base`.
// A file that is missing keeps its reference. Fails when a file cannot be copied.
Result<std::string> TakeImportedPictures(std::string_view html, const std::filesystem::path& base,
                                         const std::filesystem::path& import_folder,
                                         const std::filesystem::path& target);

}  // namespace quillcast::compose

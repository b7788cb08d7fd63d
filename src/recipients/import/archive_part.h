// Unpacks a part of a ZIP archive.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/cancel.h"
#include "recipients/import/archive_directory.h"

namespace quillcast::recipients {

// A whole part, of no more bytes than the directory says that it has. Empty where there is none of that name.
// Errors: kBadData for one that is damaged, or packed in another way than by deflate;
// kTryAgain when `cancel` asks to give up.
Result<std::string> UnpackPart(const std::filesystem::path& file, const ArchiveDirectory& directory,
                               std::string_view name, const platform::CancelToken* cancel = nullptr);

}  // namespace quillcast::recipients

// What an office program keeps in a comment of a page to compute its text from: "INCLUDEPICTURE", "HYPERLINK". No
// reader shows it.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quillcast::html {

// Whether a comment that begins so holds them: "<!--[if supportFields]>".
bool BeginsFields(std::string_view comment);

// Whether what stands in such a comment names a file, in one of its texts or in all of them together: a mark of
// spelling or of a language parts a path. A relative path counts too. `known` as in local_names.h.
bool FieldsNameFile(std::string_view fields, std::span<const std::string> known);

}  // namespace quillcast::html

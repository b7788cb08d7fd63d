// The headers of the parts of a message, and the empty line behind them.
#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include "charset/charset.h"
#include "message/transfer_encoding.h"

namespace quillcast::message {

// One for each form in which the part may come out.
using HeadersByForm = std::array<std::string, kWireForms>;

// `type` is "plain" or "html".
HeadersByForm TextPartHeaders(std::string_view type, charset::Charset charset);

// The end of a header section that says nothing of MIME; for a body that could not be read without, the three fields
// that it takes.
HeadersByForm BareHeaders(charset::Charset charset, bool always_named);

// `content_id` may be empty.
std::string FilePartHeader(std::string_view media_type, std::string_view disposition, const std::filesystem::path& file,
                           std::string_view content_id, WireForm form);

}  // namespace quillcast::message

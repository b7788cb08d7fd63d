#include "mail_file/found_files.h"

#include "mail_file/part_fields.h"
#include "mime/media_type.h"

namespace quillcast::mail_file {

std::size_t FoundFiles::Add(std::size_t holder, std::string_view name, std::string_view encoding) {
  if (parts.size() > kMostParts) {
    faults.Add(LoadCode::kException,
               Say("There are more than {} parts; what else the part at byte {} holds was left out.", kMostParts,
                   parts[holder].header.begin));
    return kNoPart;
  }
  Part part;
  part.parent = holder;
  part.message = parts[holder].message;
  part.depth = parts[holder].depth + 1;
  part.name = BoundedPartText(name);
  part.type = mime::MediaTypeOf(part.name, {});
  part.encoding = encoding;
  part.marker = part.message == kNoPart ? Marker::kAttachment : Marker::kNone;
  parts.push_back(std::move(part));
  return parts.size() - 1;
}

bool FoundFiles::is_cancelled() const { return cancel != nullptr && cancel->Requested() != platform::Stop::kNone; }

}  // namespace quillcast::mail_file

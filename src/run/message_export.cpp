#include "run/message_export.h"

#include <utility>

#include "message/message_template.h"
#include "platform/file_attributes.h"
#include "run/single_message.h"

namespace quillcast::run {

std::optional<Complaint<MessageExportControl>> CheckMessageExport(const ExportTarget& target) {
  if (!target.file.empty()) return {};
  return Complaint<MessageExportControl>{"Please specify a file.", MessageExportControl::kFile};
}

Result<Exported> ExportMessage(const document::MessageDocument& document, message::MessageOptions options,
                               const ExportTarget& target, const RunPlace& place) {
  if (platform::IsLocked(target.file)) return platform::TargetIsLocked(target.file);
  options.name_field = 0;
  options.is_draft = target.is_draft;
  const message::MessageTemplate message(document, std::move(options), place.folders.temporary, place.clock,
                                         place.entropy);
  if (const auto& trouble = message.trouble()) return trouble->error;
  if (const auto other = document::CheckIsNoSource(target.file, document); !other) return other.error();
  message::RenderedMessage rendered;
  const auto made = RenderWithTags(message, smtp::Address(), rendered);
  if (!made) return made.error();
  const auto written = platform::ReplaceChosenFile(target.file, place.folders.OwnFiles(), [&](int fd) {
    return message::WriteMessage(rendered, fd, target.file, &place.cancel);
  });
  if (!written) return written.error();
  Exported exported{rendered.size(), message::ListPictures(message.pictures(), message.foreign_pictures())};
  for (const auto& trouble : message.picture_troubles()) exported.notes.push_back(Describe(trouble));
  return exported;
}

}  // namespace quillcast::run

#include "run/message_preview.h"

#include "message/message_parts.h"
#include "message/message_template.h"
#include "platform/file.h"
#include "run/single_message.h"

namespace quillcast::run {
Result<Preview> WritePreview(const document::MessageDocument& document, message::MessageOptions options,
                             const RunPlace& place) {
  const profile::Folders& folders = place.folders;
  options.name_field = 0;
  const bool sends_html = message::HasHtml(message::PartsOf(document, options));
  const smtp::Address address = options.sender_address;
  const message::MessageTemplate message(document, std::move(options), folders.temporary, place.clock, place.entropy);
  if (const auto& trouble = message.trouble()) return trouble->error;
  Preview preview{folders.PreviewMessage(), message::ListPictures(message.pictures(), message.foreign_pictures()), {}};
  for (const auto& picture : message.pictures()) preview.pictures.push_back(picture.file);
  for (const auto& trouble : message.picture_troubles()) preview.notes.push_back(Describe(trouble));
  if (sends_html) {
    const auto body = platform::ReplaceFile(folders.PreviewBody(), document.html);
    if (!body) return body.error();
  }
  message::RenderedMessage rendered;
  const auto made = RenderWithTags(message, address, rendered);
  if (!made) return made.error();
  const auto written =
      platform::ReplaceFile(preview.file, [&](int fd) { return message::WriteMessage(rendered, fd, preview.file); });
  if (!written) return written.error();
  return preview;
}

}  // namespace quillcast::run

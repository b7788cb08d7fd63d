#include "sending/message_preview.h"

#include "compose/merge_fields.h"
#include "platform/file.h"
#include "sending/message_template.h"

namespace quillcast::sending {
namespace {

// A tag that is replaced by itself stays.
compose::MergeValues TagsAsValues() {
  compose::MergeValues values;
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = compose::kMergeFields[i].tag;
  return values;
}

}  // namespace

Result<Preview> WritePreview(const app::Folders& folders, const app::SettingsStore& settings,
                             const compose::MessageDocument& document, const AccountSettings& account,
                             const platform::Clock& clock, platform::Entropy& entropy) {
  auto options = LoadMessageOptions(settings, account);
  if (!options) return options.error();
  options->name_field = 0;
  const std::string address = options->sender_address;
  const MessageTemplate message(document, std::move(*options), folders.temporary, clock, entropy);
  if (const auto& trouble = message.trouble()) return trouble->error;
  Preview preview{folders.PreviewMessage(), ListPictures(message.pictures(), message.foreign_pictures()), {}};
  for (const auto& picture : message.pictures()) preview.pictures.push_back(picture.file);
  for (const auto& trouble : message.picture_troubles()) preview.notes.push_back(Describe(trouble));
  if (document.format == compose::Format::kHtml) {
    const auto body = platform::ReplaceFile(folders.PreviewBody(), document.html);
    if (!body) return body.error();
  }
  RenderedMessage rendered;
  const auto made = message.Render(TagsAsValues(), address, 1, rendered);
  if (!made) return made.error();
  const auto written =
      platform::ReplaceFile(preview.file, [&](int fd) { return WriteMessage(rendered, fd, preview.file); });
  if (!written) return written.error();
  return preview;
}

}  // namespace quillcast::sending

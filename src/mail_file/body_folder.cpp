#include "mail_file/body_folder.h"

#include <functional>
#include <optional>
#include <unordered_map>

#include "html/safe_page.h"
#include "mail_file/data_picture.h"
#include "mail_file/embedded_parts.h"
#include "mail_file/safe_part_name.h"
#include "mail_file/within_memory.h"
#include "mime/media_type.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

// A file is opened as what its ending says, and it is to be what its content is.
std::string PictureName(const Part& part, std::size_t place, const std::string& type) {
  std::string name = FileNameOf(part, place);
  if (mime::MediaTypeOf(name, {}) != type) name += EndingOfType(type);
  return name;
}

class FolderWriter {
 public:
  FolderWriter(const MailMessage& message, ChosenFolder& folder, const BodyFolderOptions& options)
      : message_(message), folder_(folder), options_(options), embedded_(message) {}

  Result<BodyFolder> Run() {
    const auto body = BodyAsHtml(message_, options_.text_as_html);
    if (!body) return body.error();
    html::SafePageOptions safe;
    safe.forbids_loading = options_.forbids_loading;
    safe.picture = [this](std::string_view address) { return Picture(address); };
    const std::string page = html::SafePage(*body, safe);
    if (options_.cancel != nullptr && options_.cancel->Requested() != platform::Stop::kNone)
      return Error{Failure::kTryAgain, "Writing the body was cancelled."};
    auto name = folder_.WriteNew(options_.page_name, [&](int fd, const std::filesystem::path& file) {
      return platform::WriteAll(fd, file, page);
    });
    if (!name) return name.error();
    out_.page = *std::move(name);
    return std::move(out_);
  }

 private:
  // The same picture is written once, however often it is shown.
  std::optional<std::string> Picture(std::string_view address) {
    const Part* const part = embedded_.Find(address);
    const auto [known, is_new] =
        names_.try_emplace(part != nullptr ? embedded_.AddressOf(*part) : std::string(address));
    if (is_new) known->second = part != nullptr ? WriteEmbedded(*part) : WriteData(address);
    return known->second.empty() ? std::nullopt : std::optional(platform::PercentEncoded(known->second));
  }

  std::string WriteEmbedded(const Part& part) {
    const std::string type = embedded_.PictureTypeOf(part);
    if (type.empty()) return {};
    return Write(PictureName(part, embedded_.PlaceOf(part), type), [&](int fd, const std::filesystem::path& file) {
      return WritePart(message_, part, fd, file, options_.cancel);
    });
  }

  std::string WriteData(std::string_view address) {
    const auto picture = PictureInAddress(address);
    if (!picture) return {};
    return Write("picture" + std::string(EndingOfType(picture->type)), [&](int fd, const std::filesystem::path& file) {
      return platform::WriteAll(fd, file, picture->bytes);
    });
  }

  std::string Write(const std::string& wanted,
                    const std::function<Result<void>(int fd, const std::filesystem::path& file)>& write) {
    const auto name = folder_.WriteNew(wanted, write);
    (name ? out_.pictures.push_back(*name) : out_.failures.push_back(name.error()));
    return name ? *name : std::string();
  }

  const MailMessage& message_;
  ChosenFolder& folder_;
  const BodyFolderOptions& options_;
  EmbeddedParts embedded_;
  std::unordered_map<std::string, std::string> names_;  // by address
  BodyFolder out_;
};

}  // namespace

Result<BodyFolder> WriteBodyFolder(const MailMessage& message, ChosenFolder& folder, const BodyFolderOptions& options) {
  return WithinMemory([&] { return FolderWriter(message, folder, options).Run(); });
}

Result<void> WritePart(const MailMessage& message, const Part& part, int fd, const std::filesystem::path& file,
                       const platform::CancelToken* cancel) {
  auto reader = message.Open(part);
  if (!reader) return reader.error();
  for (;;) {
    if (cancel != nullptr && cancel->Requested() != platform::Stop::kNone)
      return Error{Failure::kTryAgain, Say("Writing \"{}\" was cancelled.", platform::Printable(file.string()))};
    const auto block = reader->Next();
    if (!block) return block.error();
    if (block->empty()) return {};
    if (auto written = platform::WriteAll(fd, file, *block); !written) return written;
  }
}

}  // namespace quillcast::mail_file

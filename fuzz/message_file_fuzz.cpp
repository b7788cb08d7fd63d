// Any bytes taken for a message file, plainly and leniently: all that is told of it can be opened, lies within the file
// and keeps its bounds, and its body is a text and a page.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "mail_file/body_page.h"
#include "mail_file/body_texts.h"
#include "mail_file/mail_message.h"
#include "platform/utf8.h"

namespace {

using namespace quillcast;
using namespace quillcast::mail_file;

void Expect(bool holds) {
  if (!holds) std::abort();
}

void LookAt(const MailMessage& message, const Part& part, std::size_t place, std::size_t size) {
  Expect(place == 0 ? part.parent == kNoPart : part.parent < message.parts().size() && part.parent != place);
  Expect(part.header.begin <= part.header.end && part.header.end <= size);
  Expect(part.source.bytes.begin <= part.source.bytes.end && part.source.bytes.end <= size);
  for (const auto* text : {&part.type, &part.charset, &part.encoding, &part.name, &part.content_id})
    Expect(text->size() <= kLongestPartText && platform::IsUtf8(*text));
  const auto read = message.EachField(part, [](std::string_view name, std::string_view value) {
    Expect(platform::IsUtf8(name) && platform::IsUtf8(value));
  });
  Expect(static_cast<bool>(read));
  Expect(static_cast<bool>(DigestOf(message.OpenAsItStands(part), nullptr)));
  auto reader = message.Open(part);
  Expect(static_cast<bool>(reader) == part.refused.empty());
  if (reader) Expect(static_cast<bool>(DigestOf(*std::move(reader), nullptr)));
}

void LookAt(const MailMessage& message, std::size_t size) {
  Expect(!message.parts().empty() && message.parts().size() <= kMostParts + 1);
  for (std::size_t i = 0; i < message.parts().size(); ++i) LookAt(message, message.parts()[i], i, size);
  for (const auto& body : {message.TextBody(), message.HtmlBody(), BodyAsText(message), BodyAsHtml(message)})
    Expect(!body || platform::IsUtf8(*body));
  for (const auto& [mailbox, type] : message.facts().recipients)
    Expect(platform::IsUtf8(mailbox.name) && platform::IsUtf8(mailbox.address));
  for (const RelayStamp& stamp : message.facts().stamps) {
    for (const auto* text : {&stamp.by, &stamp.for_whom, &stamp.from, &stamp.id, &stamp.protocol, &stamp.via})
      Expect(text->size() <= 2 * kLongestPartText + 1 && platform::IsUtf8(*text));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const platform::UniqueFd file(::memfd_create("message", 0));
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  Expect(static_cast<bool>(platform::WriteAll(file.get(), "message", bytes)));
  const std::string path = "/proc/self/fd/" + std::to_string(file.get());
  for (const LoadMode mode : {LoadMode::kPlain, LoadMode::kExtended}) {
    const auto loading = Load(path, {.mode = mode});
    Expect(static_cast<bool>(loading));
    Expect(loading->message.has_value() == (size > 0));
    if (loading->message) LookAt(*loading->message, size);
  }
  return 0;
}

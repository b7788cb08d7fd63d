// quillcast message show: what is in a message file.
#include <fmt/format.h>

#include <array>

#include "cli/message_commands.h"
#include "mail_file/body_texts.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using mail_file::Mailbox;
using mail_file::MailMessage;
using mail_file::Marker;
using mail_file::Part;
using mail_file::PartDigest;
using mail_file::RecipientType;
using mail_file::RelayStamp;
using nlohmann::ordered_json;

constexpr std::uint64_t kLongestShownBody = std::uint64_t{1024} * 1024;  // bytes
constexpr std::array kFieldOfType = {"To", "Cc", "Bcc"};                 // by RecipientType

std::string_view WordOf(Marker marker) {
  switch (marker) {
    case Marker::kBody:
      return "body";
    case Marker::kAttachment:
      return "attachment";
    case Marker::kNone:
      return "";
  }
  return "";
}

// The size and hash of what can be opened; of what only holds others nothing is read.
Result<std::optional<PartDigest>> DigestOf(const Context& context, const MailMessage& message, const Part& part) {
  if (!part.refused.empty() || (part.holds_parts && part.marker == Marker::kNone)) return std::optional<PartDigest>();
  auto reader = message.Open(part);
  if (!reader) return reader.error();
  auto digest = mail_file::DigestOf(*std::move(reader), &context.cancel);
  if (!digest) return digest.error();
  return std::optional(*std::move(digest));
}

// For programs.

ordered_json AsObject(const Mailbox& mailbox) { return {{"name", mailbox.name}, {"address", mailbox.address}}; }

ordered_json AsObject(const std::optional<mail_file::StampedTime>& time) {
  if (!time) return nullptr;
  return {{"local", time->local}, {"bias", time->Bias()}, {"unix", time->unix_time}};
}

Result<ordered_json> Headers(const MailMessage& message) {
  ordered_json list = ordered_json::array();
  const auto read = message.EachField(message.parts().front(), [&](std::string_view name, std::string_view value) {
    list.push_back({{"name", name}, {"value", value}});
  });
  if (!read) return read.error();
  return list;
}

Result<ordered_json> Parts(const Context& context, const MailMessage& message) {
  ordered_json list = ordered_json::array();
  for (const Part& part : message.parts()) {
    const auto digest = DigestOf(context, message, part);
    if (!digest) return digest.error();
    ordered_json object = {{"part", list.size()}};
    object["parent"] = part.parent == mail_file::kNoPart ? ordered_json() : ordered_json(part.parent);
    object["type"] = part.type;
    object["charset"] = part.charset;
    object["encoding"] = part.encoding;
    object["name"] = part.name;
    object["content_id"] = part.content_id;
    object["marker"] = WordOf(part.marker);
    object["size"] = *digest ? ordered_json((*digest)->size) : ordered_json();
    object["sha256"] = *digest ? ordered_json((*digest)->sha256) : ordered_json();
    if (!part.refused.empty()) object["refused"] = part.refused;
    list.push_back(std::move(object));
  }
  return list;
}

ordered_json Recipients(const std::vector<mail_file::Recipient>& recipients) {
  ordered_json list = ordered_json::array();
  for (const auto& [mailbox, type] : recipients) {
    ordered_json object = {{"field", kFieldOfType.at(static_cast<std::size_t>(type))}};
    object.update(AsObject(mailbox));
    list.push_back(std::move(object));
  }
  return list;
}

ordered_json Stamps(const std::vector<RelayStamp>& stamps) {
  ordered_json list = ordered_json::array();
  const auto delays = mail_file::HopDelays(stamps);
  for (std::size_t i = 0; i < stamps.size(); ++i) {
    const RelayStamp& stamp = stamps[i];
    list.push_back({{"by", stamp.by},
                    {"time", AsObject(stamp.time)},
                    {"for", stamp.for_whom},
                    {"from", stamp.from},
                    {"id", stamp.id},
                    {"protocol", stamp.protocol},
                    {"via", stamp.via},
                    {"delay", delays[i] ? ordered_json(*delays[i]) : ordered_json()}});
  }
  return list;
}

int ShowObject(const Context& context, const std::string& name, const mail_file::Loading& loading) {
  const MailMessage& message = *loading.message;
  const mail_file::MessageFacts& facts = message.facts();
  auto headers = Headers(message);
  if (!headers) return context.output.Fail(headers.error());
  auto parts = Parts(context, message);
  if (!parts) return context.output.Fail(parts.error());
  ordered_json object = {{"file", name}, {"code", static_cast<int>(loading.code())}};
  object["faults"] = FaultsAsList(loading);
  object["subject"] = facts.subject;
  object["date"] = facts.date;
  object["time"] = AsObject(facts.time);
  object["from"] = AsObject(facts.from);
  object["recipients"] = Recipients(facts.recipients);
  object["headers"] = *std::move(headers);
  object["parts"] = *std::move(parts);
  object["stamps"] = Stamps(facts.stamps);
  context.output.Object(object);
  return 0;
}

// For people.

void ShowHead(const Context& context, const mail_file::MessageFacts& facts) {
  const auto line = [&context](std::string_view name, std::string_view value) {
    if (!value.empty()) context.output.Line(fmt::format("{:<9}{}", name, platform::Printable(value)));
  };
  line("From:", mail_file::ShownMailbox(facts.from));
  for (const auto& [mailbox, type] : facts.recipients)
    line(fmt::format("{}:", kFieldOfType.at(static_cast<std::size_t>(type))), mail_file::ShownMailbox(mailbox));
  line("Subject:", facts.subject);
  line("Date:", facts.date);
}

int ShowParts(const Context& context, const MailMessage& message) {
  context.output.Line("\nParts:");
  std::size_t number = 0;
  for (const Part& part : message.parts()) {
    const auto digest = DigestOf(context, message, part);
    if (!digest) return context.output.Fail(digest.error());
    std::string line = fmt::format("{:>5}  {:{}}{}", number++, "", 2 * part.depth, platform::Printable(part.type, 100));
    if (!part.name.empty()) line += fmt::format("  \"{}\"", platform::Printable(part.name, 200));
    if (*digest) line += "  " + platform::HumanSize((*digest)->size);
    if (part.marker != Marker::kNone) line += fmt::format("  {}", WordOf(part.marker));
    if (!part.refused.empty()) line += fmt::format("  cannot be decoded: {}", platform::Printable(part.refused, 100));
    context.output.Line(line);
  }
  return 0;
}

void ShowWay(const Context& context, const std::vector<RelayStamp>& stamps) {
  if (stamps.empty()) return;
  context.output.Line("\nThe way it came, the last hop first:");
  const auto delays = mail_file::HopDelays(stamps);
  for (std::size_t i = 0; i < stamps.size(); ++i) {
    const RelayStamp& stamp = stamps[i];
    std::string line = "  ";
    line +=
        stamp.time ? fmt::format("{} {:>5}", stamp.time->local, stamp.time->Bias()) : std::string("at an unknown time");
    if (delays[i]) line += fmt::format("  {:+} s", *delays[i]);
    for (const auto& [word, value] :
         {std::pair("by", &stamp.by), std::pair("from", &stamp.from), std::pair("with", &stamp.protocol),
          std::pair("via", &stamp.via), std::pair("for", &stamp.for_whom)}) {
      if (!value->empty()) line += fmt::format("  {} {}", word, platform::Printable(*value, 200));
    }
    context.output.Line(line);
  }
}

int ShowBody(const Context& context, const MailMessage& message) {
  std::uint64_t bytes = 0;
  for (const Part& part : message.parts()) bytes += part.marker == Marker::kBody ? part.source.bytes.size() : 0;
  if (bytes > kLongestShownBody) {
    context.output.Note(fmt::format("The text takes {} and is not shown.", platform::HumanSize(bytes)));
    return 0;
  }
  const auto body = mail_file::BodyAsText(message);
  if (!body) return context.output.Fail(body.error());
  if (!body->empty()) context.output.Line("\n" + *body);
  return 0;
}

int ShowText(const Context& context, const std::string& name, const MailMessage& message, bool is_one_of_several) {
  if (is_one_of_several) context.output.Line(fmt::format("== {}", platform::Printable(name)));
  ShowHead(context, message.facts());
  if (const int failed = ShowParts(context, message); failed != 0) return failed;
  ShowWay(context, message.facts().stamps);
  return ShowBody(context, message);
}

}  // namespace

void AddMessageShow(CLI::App& message, Context& context) {
  CLI::App& show =
      *message.add_subcommand("show", "Show what is in message files: headers, parts, the way they came, text");
  const auto files = std::make_shared<MessageFiles>();
  AddMessageFiles(show, *files);
  show.footer(
      "Nothing in a message runs or is loaded. A text of more than 1 MiB is left out. With --json: one object a "
      "message, with each part's size and SHA-256.\n"
      "Example: quillcast message show letter.eml");
  OnRun(show, context, [files](Context& ctx) {
    return WithMessages(ctx, *files, [&](const LoadedFile& file) {
      if (ctx.output.json) return ShowObject(ctx, file.name, file.loading);
      return ShowText(ctx, file.name, *file.loading.message, files->names.size() > 1);
    });
  });
}

}  // namespace quillcast::cli

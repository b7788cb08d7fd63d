#include "run/frozen/frozen_text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "account/key_roles.h"
#include "message/body_import.h"
#include "run/frozen/json_fields.h"

namespace quillcast::run {
namespace {

using document::MessageDocument;
using message::FileTrouble;
using nlohmann::json;

// To be raised with whatever a message is made of besides.
constexpr std::int64_t kVersion = 1;
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

// In the order of the enums.
constexpr auto kFormats = std::to_array<std::string_view>({"HTML", "Text"});
constexpr auto kPriorities = std::to_array<std::string_view>({"Low", "Normal", "High"});
// These go by their exit codes, which are the same for all time.
constexpr std::array kFailures = {Failure::kUsage,        Failure::kBadData,      Failure::kNoInput,
                                  Failure::kUnavailable,  Failure::kInternal,     Failure::kCannotCreate,
                                  Failure::kIo,           Failure::kTryAgain,     Failure::kTimedOut,
                                  Failure::kNotPermitted, Failure::kNotConfigured};

Error NotReadable() {
  return {Failure::kBadData, "What the run was made of cannot be read: the journal of runs is damaged.",
          "Make a group of those who are left, in the window of the runs or with runs export --to-group, and send to "
          "it anew."};
}

json JsonOf(const MessageDocument& document) {
  json written{{"subject", JsonOfOctets(document.subject)},
               {"html", JsonOfOctets(document.html)},
               {"folder", JsonOfOctets(document.base_folder.string())},
               {"format", kFormats.at(static_cast<std::size_t>(document.format))},
               {"priority", kPriorities.at(static_cast<std::size_t>(document.priority))},
               {"read_receipt", document.read_receipt}};
  if (document.text) written["text"] = JsonOfOctets(*document.text);
  return written;
}

MessageDocument DocumentIn(const json& from, JsonFields& fields) {
  MessageDocument document;
  document.subject = fields.Octets(fields.At(from, "subject"));
  document.html = fields.Octets(fields.At(from, "html"));
  document.base_folder = fields.Octets(fields.At(from, "folder"));
  if (fields.Has(from, "text")) document.text = fields.Octets(fields.At(from, "text"));
  document.format = static_cast<document::Format>(fields.Choice(fields.At(from, "format"), kFormats));
  document.priority = static_cast<document::Priority>(fields.Choice(fields.At(from, "priority"), kPriorities));
  document.read_receipt = fields.Switch(fields.At(from, "read_receipt"));
  return document;
}

// The secrets are among those that say how to connect.
bool IsFrozen(account::AccountKey key) { return account::RoleOf(key) != account::KeyRole::kTheWay; }

json JsonOf(const account::AccountSettings& account) {
  json written = json::object();
  for (const auto& row : account::AccountKeyRows()) {
    if (IsFrozen(row.key)) written[std::string(row.name)] = JsonOfOctets(account[row.key]);
  }
  return written;
}

account::AccountSettings AccountIn(const json& from, JsonFields& fields) {
  account::AccountSettings account;
  for (const auto& row : account::AccountKeyRows()) {
    if (IsFrozen(row.key)) account.Set(row.key, fields.Octets(fields.At(from, std::string(row.name).c_str())));
  }
  return account;
}

json JsonOf(const FileTrouble& trouble) {
  return {{"code", static_cast<std::int32_t>(trouble.code)},
          {"exit_code", ExitCode(trouble.error.failure)},
          {"what", JsonOfOctets(trouble.error.what.InEnglish())},
          {"remedy", JsonOfOctets(trouble.error.remedy.InEnglish())}};
}

FileTrouble TroubleIn(const json& from, JsonFields& fields) {
  const auto lowest = static_cast<std::int64_t>(smtp::ResultCode::kFileNotOpened);
  const auto highest = static_cast<std::int64_t>(smtp::ResultCode::kFileNotRead);
  const auto exit_code = fields.Number(fields.At(from, "exit_code"), 0, 255);
  const auto failure =
      std::find_if(kFailures.begin(), kFailures.end(), [&](Failure known) { return ExitCode(known) == exit_code; });
  if (failure == kFailures.end()) fields.Refuse();
  return {static_cast<smtp::ResultCode>(fields.Number(fields.At(from, "code"), lowest, highest)),
          Error{failure == kFailures.end() ? Failure::kInternal : *failure, fields.Octets(fields.At(from, "what")),
                fields.Octets(fields.At(from, "remedy"))}};
}

void Write(const Content& content, json& written) {
  if (const auto* kept = std::get_if<KeptFile>(&content)) {
    written["kept"] = JsonOfOctets(kept->name);
  } else {
    written["trouble"] = JsonOf(std::get<FileTrouble>(content));
  }
}

Content ContentIn(const json& from, const std::vector<KeptFile>& kept, JsonFields& fields) {
  if (fields.Has(from, "trouble")) return TroubleIn(fields.At(from, "trouble"), fields);
  const std::string name = fields.Octets(fields.At(from, "kept"));
  const auto found = std::find_if(kept.begin(), kept.end(), [&](const KeptFile& file) { return file.name == name; });
  if (found != kept.end()) return *found;
  fields.Refuse();
  return {};
}

json JsonOf(const FrozenFile& attachment) {
  json written{{"file", JsonOfOctets(attachment.file)}};
  Write(attachment.content, written);
  return written;
}

json JsonOf(const FrozenPicture& picture) {
  json written{{"file", JsonOfOctets(picture.file)}};
  if (const auto* trouble = std::get_if<message::PictureTrouble>(&picture.found)) {
    written["body_code"] = trouble->code;
  } else if (const auto* foreign = std::get_if<message::ForeignPicture>(&picture.found)) {
    written["foreign"] = JsonOfOctets(foreign->file.string());
    written["left_out"] = foreign->left_out;
  } else {
    written["type"] = std::get<message::Picture>(picture.found).media_type;
    Write(picture.content, written);
  }
  return written;
}

// It stands in a header.
bool IsPictureType(std::string_view type) {
  constexpr std::string_view kFamily = "image/";
  constexpr std::string_view kOfNames = "abcdefghijklmnopqrstuvwxyz0123456789.+-";
  return type.starts_with(kFamily) && type.size() > kFamily.size() &&
         type.find_first_not_of(kOfNames, kFamily.size()) == std::string_view::npos;
}

std::int32_t BodyCodeIn(const json& from, JsonFields& fields) {
  constexpr std::array kCodes = {message::kBodyNotOpened, message::kBodyNotRead, message::kBodyNoFile,
                                 message::kBodyNotParsed};
  const auto code = static_cast<std::int32_t>(fields.Number(from, 0, message::kBodyNotParsed));
  if (std::find(kCodes.begin(), kCodes.end(), code) == kCodes.end()) fields.Refuse();
  return code;
}

FrozenPicture PictureIn(const json& from, const std::vector<KeptFile>& kept, JsonFields& fields) {
  FrozenPicture picture{fields.Octets(fields.At(from, "file")), message::PictureTrouble{}, {}};
  if (fields.Has(from, "body_code")) {
    picture.found = message::PictureTrouble{picture.file, BodyCodeIn(fields.At(from, "body_code"), fields)};
  } else if (fields.Has(from, "foreign")) {
    picture.found =
        message::ForeignPicture{fields.Octets(fields.At(from, "foreign")), fields.Switch(fields.At(from, "left_out"))};
  } else {
    message::Picture found;
    found.file = picture.file;
    found.media_type = fields.Octets(fields.At(from, "type"));
    if (!IsPictureType(found.media_type)) fields.Refuse();
    picture.found = std::move(found);
    picture.content = ContentIn(from, kept, fields);
  }
  return picture;
}

template <typename Items>
json JsonOfEach(const Items& items) {
  json written = json::array();
  for (const auto& item : items) written.push_back(JsonOf(item));
  return written;
}

std::optional<recipients::PartialRange> RangeIn(const json& from, JsonFields& fields) {
  if (!fields.Has(from, "first")) return std::nullopt;
  recipients::PartialRange range;
  range.first = fields.Number(fields.At(from, "first"), 1, kMost);
  range.last = fields.Number(fields.At(from, "last"), range.first, kMost);
  return range;
}

}  // namespace

std::string FrozenText(const Frozen& frozen) {
  const MailingInputs& inputs = frozen.inputs;
  json written{{"version", kVersion},
               {"document", JsonOf(inputs.document)},
               {"account", JsonOf(inputs.account)},
               {"body_format", JsonOfOctets(inputs.body_format)},
               {"group", JsonOfOctets(inputs.group)},
               {"group_id", inputs.group_id},
               {"recipients", inputs.recipients},
               {"attachments", JsonOfEach(frozen.files.attachments)},
               {"pictures", JsonOfEach(frozen.files.pictures)},
               {"sources", JsonOfEach(frozen.files.sources)}};
  if (inputs.range) {
    written["first"] = inputs.range->first;
    written["last"] = inputs.range->last;
  }
  return written.dump();
}

Result<Frozen> ReadFrozenText(std::string_view text, const std::vector<KeptFile>& kept) {
  const json read = json::parse(text, nullptr, false);
  JsonFields fields;
  const auto version = fields.Number(fields.At(read, "version"), 1, kMost);
  if (!fields.fine()) return NotReadable();
  if (version > kVersion) {
    return Error{Failure::kUnavailable, "A newer version of this program began the run.", "Go on with it there."};
  }
  Frozen frozen;
  MailingInputs& inputs = frozen.inputs;
  inputs.document = DocumentIn(fields.At(read, "document"), fields);
  inputs.account = AccountIn(fields.At(read, "account"), fields);
  inputs.body_format = fields.Octets(fields.At(read, "body_format"));
  inputs.group = fields.Octets(fields.At(read, "group"));
  if (fields.Has(read, "group_id")) inputs.group_id = fields.Number(fields.At(read, "group_id"), 0, kMost);
  inputs.recipients = fields.Number(fields.At(read, "recipients"), 0, kMost);
  inputs.range = RangeIn(read, fields);
  const auto file_in = [&](const json& from) {
    return FrozenFile{fields.Octets(fields.At(from, "file")), ContentIn(from, kept, fields)};
  };
  fields.ForEach(fields.At(read, "attachments"), [&](const json& from) {
    frozen.files.attachments.push_back(file_in(from));
    if (!inputs.document.attachments.Add(frozen.files.attachments.back().file)) fields.Refuse();
  });
  fields.ForEach(fields.At(read, "pictures"),
                 [&](const json& from) { frozen.files.pictures.push_back(PictureIn(from, kept, fields)); });
  if (fields.Has(read, "sources")) {
    fields.ForEach(fields.At(read, "sources"),
                   [&](const json& from) { frozen.files.sources.push_back(file_in(from)); });
  }
  if (!fields.fine()) return NotReadable();
  return frozen;
}

Result<Frozen> ReadFrozen(RunJournal& journal, MailingId mailing) {
  const auto inputs = journal.Inputs(mailing);
  return inputs ? ReadFrozenText(inputs->inputs, inputs->files) : Result<Frozen>(inputs.error());
}

}  // namespace quillcast::run

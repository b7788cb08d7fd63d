// quillcast properties: what the properties dialog says of a document.
#include <fmt/format.h>

#include "account/account_settings.h"
#include "cli/commands.h"
#include "document/document_look.h"
#include "document/message_document.h"
#include "document/message_properties.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using nlohmann::ordered_json;

struct PropertiesOptions {
  std::string file;
  bool check = false;
};

std::string Shown(const Sentence& sentence) { return platform::Printable(sentence.InEnglish(), 4096); }

ordered_json AsJson(const document::DocumentLook& look) {
  ordered_json links = ordered_json::array();
  for (const auto& link : look.links) {
    links.push_back({{"text", link.text}, {"target", link.target}});
    links.back()["trouble"] = link.trouble ? ordered_json(link.trouble->InEnglish()) : ordered_json();
  }
  ordered_json pictures = ordered_json::array();
  for (const auto& picture : look.pictures) {
    pictures.push_back({{"file", picture.file}, {"size", picture.size ? ordered_json(*picture.size) : ordered_json()}});
  }
  ordered_json findings = ordered_json::array();
  for (const auto& finding : look.findings) findings.push_back(finding.InEnglish());
  return {{"words", look.words},
          {"size", look.size},
          {"sizeWithPictures", look.size + look.picture_size},
          {"pictures", pictures},
          {"pictureCount", look.picture_count},
          {"links", links},
          {"linkCount", look.link_count},
          {"findings", findings}};
}

template <typename Item>
void PrintList(const Context& context, const char* heading, const std::vector<Item>& items, const Sentence& more) {
  if (items.empty()) return;
  context.output.Line(heading);
  for (const auto& item : items) context.output.Line("  " + Shown(Describe(item)));
  if (!more.empty()) context.output.Line("  " + Shown(more));
}

void Print(const Context& context, const document::DocumentLook& look) {
  context.output.Line(Shown(SizeOf(look)));
  PrintList(context, "Pictures:", look.pictures, MorePictures(look));
  PrintList(context, "Links:", look.links, MoreLinks(look));
  context.output.Line(look.findings.empty() ? "Nothing was found that would hurt the mailing." : "To be mended:");
  for (const auto& finding : look.findings) context.output.Line("  " + Shown(finding));
}

Result<document::DocumentLook> LookAtDocument(const Context& context, const document::MessageDocument& document) {
  const auto account = account::AccountSettings::Load(profile::SettingsStore(context.Folders().settings));
  if (!account) return account.error();
  return document::LookAt(document, account->IsOn(account::AccountKey::kTextPart), context.cancel);
}

int RunProperties(Context& context, const PropertiesOptions& options) {
  document::MessageDocument document;
  const auto loaded = document::LoadBody(document, options.file);
  if (!loaded) return context.output.Fail(loaded.error());
  std::error_code failed;  // the current folder is gone: the name as given is the best there is
  const auto absolute = std::filesystem::absolute(options.file, failed);
  const auto properties = document::PropertiesLoad(failed ? options.file : absolute.string(),
                                                   document::TitleOf(document.html), document.html);
  std::optional<document::DocumentLook> look;
  if (options.check) {
    auto looked = LookAtDocument(context, document);
    if (!looked) return context.output.Fail(looked.error());
    look = std::move(*looked);
  }
  for (const auto& [label, text] :
       std::initializer_list<std::pair<const char*, std::string_view>>{{"Location", properties.location},
                                                                       {"Title", properties.title},
                                                                       {"Direction", properties.direction},
                                                                       {"Language", properties.language},
                                                                       {"Character set", properties.charset}}) {
    context.output.Line(fmt::format("{}: {}", label, platform::Printable(text)));
  }
  ordered_json object = {{"location", properties.location},
                         {"title", properties.title},
                         {"direction", properties.direction},
                         {"language", properties.language},
                         {"charset", properties.charset}};
  if (look) {
    Print(context, *look);
    object.update(AsJson(*look));
  }
  context.output.Object(object);
  return 0;
}

}  // namespace

void AddPropertiesCommand(CLI::App& app, Context& context) {
  auto* command = app.add_subcommand("properties", "A document's location, title, direction, language, character set");
  auto options = std::make_shared<PropertiesOptions>();
  command->add_option("file", options->file, "An HTML file, or a text file whose name ends in .txt")
      ->required()
      ->type_name("FILE");
  command->add_flag(
      "--check", options->check,
      "Also count its words and weigh it, list its pictures and links, and tell what would hurt a mailing");
  command->footer("Example:\n  quillcast properties letter.html --check");
  OnRun(*command, context, [options](Context& c) { return RunProperties(c, *options); });
}

}  // namespace quillcast::cli

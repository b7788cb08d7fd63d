// quillcast help: the pages of the help as text, and what a command says of itself.
#include <fmt/format.h>

#include <memory>

#include "cli/commands.h"
#include "cli/man_page.h"
#include "help/help_pages.h"
#include "help/tips.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using help::Page;
using nlohmann::ordered_json;

struct HelpRequest {
  std::vector<std::string> topic;
  std::string search;
  std::string man_pages;  // a folder
  bool tip = false;
};

std::string Joined(const std::vector<std::string>& words) { return fmt::format("{}", fmt::join(words, " ")); }

// "Group Manager 1": what to type after `help`.
std::string AskedAs(const Page& page) { return page.topic.substr(0, page.topic.rfind('.')); }

void List(const Output& output, const Page& page, const std::string& excerpt = {}) {
  output.Line(fmt::format("{:<22} {}", AskedAs(page), page.title));
  if (!excerpt.empty()) output.Line("    " + excerpt);
  ordered_json object = {{"topic", page.topic}, {"title", page.title}};
  if (!excerpt.empty()) object["excerpt"] = excerpt;
  output.Object(object);
}

int Show(const Output& output, const Page& page) {
  const std::string text = help::TextOf(page);
  output.Line(text);
  output.Object({{"topic", page.topic}, {"title", page.title}, {"text", text}});
  return 0;
}

int RunSearch(const Output& output, const std::vector<Page>& pages, const std::string& words) {
  const auto hits = help::Search(pages, words);
  if (hits.empty()) {
    return output.Fail({Failure::kNoInput, Say("No page of the help has \"{}\".", words),
                        "Take fewer or other words; quillcast help lists the pages."});
  }
  for (const help::Hit& hit : hits) List(output, *hit.page, hit.excerpt);
  return 0;
}

// The command of that name, or of those names one below the other; null where there is none. `names` has one.
const CLI::App* CommandNamed(const CLI::App& app, const std::vector<std::string>& names) {
  const CLI::App* command = &app;
  for (const std::string& name : names) {
    const auto below = command->get_subcommands([&name](const CLI::App* c) { return c->check_name(name); });
    if (below.empty()) return nullptr;
    command = below.front();
  }
  return command;
}

// A page's name comes before a command's, and that before a part of a page's name.
int RunTopic(const Output& output, const std::vector<Page>& pages, const CLI::App& app, const HelpRequest& request) {
  const std::string words = Joined(request.topic);
  const auto named = help::PagesNamed(pages, words);
  const bool is_whole = named.size() == 1 && (platform::EqualsIgnoringAsciiCase(AskedAs(*named.front()), words) ||
                                              platform::EqualsIgnoringAsciiCase(named.front()->title, words));
  if (is_whole) return Show(output, *named.front());
  if (const CLI::App* command = CommandNamed(app, request.topic)) {
    const std::string text = command->help(FullName(*command->get_parent()));
    output.Line(text);
    output.Object({{"command", words}, {"text", text}});
    return 0;
  }
  if (named.size() == 1) return Show(output, *named.front());
  for (const Page* page : named) List(output, *page);
  if (named.empty()) {
    return output.Fail({Failure::kNoInput, Say("There is no page of the help on \"{}\".", words),
                        "quillcast help lists the pages; --search looks through their text."});
  }
  output.Note("Several pages; name one of them.");
  return 0;
}

// The next time comes the next one, in the window too.
int ShowTip(Context& context) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  profile::SettingsStore settings(folders->settings);
  const help::TipPlace place = help::FirstTip(settings);
  const help::Tip& tip = help::TipAt(place);
  context.output.Line(tip.text);
  const std::string topic(tip.topic);
  context.output.Line(fmt::format("More: quillcast help {}", topic.substr(0, topic.rfind('.'))));
  context.output.Object({{"tip", tip.text}, {"topic", topic}, {"number", help::NumberOf(place)}});
  const auto kept = help::KeepFirstTip(settings, help::NextTip(place));
  return kept ? 0 : context.output.Fail(kept.error());
}

int RunHelp(Context& context, const CLI::App& app, const HelpRequest& request) {
  if (!request.man_pages.empty()) {
    const auto written = WriteManPages(app, request.man_pages);
    return written ? 0 : context.output.Fail(written.error());
  }
  if (request.tip) return ShowTip(context);
  const auto pages = help::LoadPages(context.Folders().program / "help");
  if (!pages) return context.output.Fail(pages.error());
  if (!request.search.empty()) return RunSearch(context.output, *pages, request.search);
  if (!request.topic.empty()) return RunTopic(context.output, *pages, app, request);
  for (const Page& page : *pages) List(context.output, page);
  context.output.Note("quillcast help TOPIC shows a page, quillcast help COMMAND what a command says of itself.");
  return 0;
}

}  // namespace

void AddHelpCommand(CLI::App& app, Context& context) {
  auto* command = app.add_subcommand("help", "The pages of the help: list, read and search them");
  const auto request = std::make_shared<HelpRequest>();
  auto* topic =
      command->add_option("TOPIC", request->topic, "A page, by its topic, its title or a part of them, or a command");
  topic->check([](const std::string& word) { return word.empty() ? "names nothing" : std::string(); });
  auto* search = command->add_option("--search", request->search, "List the pages that have all these words");
  search->type_name("WORDS")->excludes(topic);
  command->add_flag("--tip", request->tip, "Show a tip; the next time the next one of thirty")
      ->excludes(topic)
      ->excludes(search);
  command->add_option("--man-pages", request->man_pages, "Write a manual page for each command into this folder")
      ->type_name("DIR");
  command->footer(
      "Example:\n  quillcast help\n  quillcast help the mail account\n  quillcast help group sort\n"
      "  quillcast help --search \"merge tag\"\n"
      "  quillcast help --tip");
  OnRun(*command, context, [request, &app](Context& c) { return RunHelp(c, app, *request); });
}

}  // namespace quillcast::cli

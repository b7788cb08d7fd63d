// quillcast compose line|table|date|template: pieces of a letter, and whole ones to begin with, on standard output.
#include <fmt/format.h>

#include <memory>

#include "cli/commands.h"
#include "document/date_time.h"
#include "document/designs.h"
#include "document/line_html.h"
#include "document/own_templates.h"
#include "document/table_html.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

template <std::size_t kCount>
CLI::Validator OneOf(const std::array<const char*, kCount>& words) {
  return CLI::IsMember(std::vector<std::string>(words.begin(), words.end()));
}

int ShowPiece(Context& context, const std::string& html) {
  context.output.Html(html.ends_with('\n') ? html : html + '\n');
  context.output.Object({{"html", html}});
  return 0;
}

void AddLine(CLI::App& compose, Context& context) {
  auto* line = compose.add_subcommand("line", "A horizontal line");
  const auto choice = std::make_shared<document::LineChoice>();
  line->add_option("--width", choice->width, "0 to 100, in pixels too")->capture_default_str();
  line->add_option("--unit", choice->unit, "Of the width")->check(OneOf(document::kLineUnits))->capture_default_str();
  line->add_option("--height", choice->height, "0 to 100 pixels")->capture_default_str();
  line->add_option("--align", choice->align, "Its side")
      ->check(OneOf(document::kLineAlignments))
      ->capture_default_str();
  line->add_flag("--solid", choice->is_solid, "Without a shade");
  line->footer("Example:\n  quillcast compose line --width 60 --align Left --solid");
  OnRun(*line, context, [choice](Context& c) {
    const auto complaint = document::CheckLine(*choice);
    return complaint ? c.output.Complain(complaint->message) : ShowPiece(c, document::LineHtml(*choice));
  });
}

struct TableOptions {
  document::TableChoice choice;
  std::string unit = "Percent";
};

void AddTable(CLI::App& compose, Context& context) {
  auto* table = compose.add_subcommand("table", "A table of empty cells");
  const auto options = std::make_shared<TableOptions>();
  auto& choice = options->choice;
  for (const auto& [name, field, description] :
       std::initializer_list<std::tuple<const char*, std::string*, const char*>>{
           {"--rows", &choice.rows, "1 to 99"},
           {"--columns", &choice.columns, "1 to 99"},
           {"--border", &choice.border, "1 to 99"},
           {"--spacing", &choice.spacing, "Between cells, 0 to 99"},
           {"--padding", &choice.padding, "In cells, 0 to 99"},
           {"--width", &choice.width, "Of the whole table"}}) {
    table->add_option(name, *field, description)->capture_default_str();
  }
  // A window takes an empty one, which a script does not mean.
  table->get_option("--width")->check(
      [](const std::string& given) { return given.empty() ? "names nothing" : std::string(); });
  table->add_option("--unit", options->unit, "Of the width")->check(OneOf(document::kLineUnits))->capture_default_str();
  table->add_option("--align", choice.align, "Its side; as the text where none is given")
      ->check(OneOf(document::kTableAlignments));
  table->footer("Example:\n  quillcast compose table --rows 4 --columns 3 --align Center --width 500 --unit Pixels");
  OnRun(*table, context, [options](Context& c) {
    options->choice.in_percent = options->unit == "Percent";
    const auto complaint = document::CheckTable(options->choice);
    return complaint ? c.output.Complain(complaint->message) : ShowPiece(c, document::TableHtml(options->choice));
  });
}

struct DateOptions {
  std::string date_format;
  std::string time_format;
  bool list = false;
};

template <std::size_t kCount>
void ListFormats(Context& context, const std::tm& now, const char* of, const std::array<const char*, kCount>& formats) {
  for (const char* format : formats) {
    const std::string text = document::Written(now, format);
    context.output.Columns({of, format, text});
    context.output.Object({{"of", of}, {"format", format}, {"text", text}});
  }
}

int RunDate(Context& context, const DateOptions& options) {
  const std::tm now = context.clock.Local(context.clock.Now());
  if (options.list) {
    ListFormats(context, now, "date", document::kDateFormats);
    ListFormats(context, now, "time", document::kTimeFormats);
    return 0;
  }
  const document::DateTimeChoice choice{document::Written(now, options.date_format),
                                        document::Written(now, options.time_format)};
  if (const auto complaint = document::CheckDateTime(choice)) {
    return context.output.Complain(complaint->message + " `quillcast compose date --list` shows them.");
  }
  return ShowPiece(context, document::DateTimeText(choice));
}

void AddDate(CLI::App& compose, Context& context) {
  auto* date = compose.add_subcommand("date", "The date and the time of now, in English");
  const auto options = std::make_shared<DateOptions>();
  date->add_option("--date", options->date_format, "The format of the date")->check(OneOf(document::kDateFormats));
  date->add_option("--time", options->time_format, "The format of the time")->check(OneOf(document::kTimeFormats));
  date->add_flag("--list", options->list, "Show the formats, with now in each");
  date->footer("Example:\n  quillcast compose date --date 'dddd, mmmm dd, yyyy' --time 'hh:mm AM/PM'");
  OnRun(*date, context, [options](Context& c) { return RunDate(c, *options); });
}

int ShowLetter(Context& context, const std::string& name, const Result<std::string>& html,
               const std::vector<Sentence>& notes) {
  if (!html) return context.output.Fail(html.error());
  std::vector<std::string> told;
  for (const auto& note : notes) context.output.Note(told.emplace_back(note.InEnglish()));
  context.output.Html(*html);
  context.output.Object({{"template", name}, {"html", *html}, {"notes", told}});
  return 0;
}

int RunTemplate(Context& context, const document::DesignChoice& choice) {
  const auto folders = context.Folders();
  const document::OwnTemplates own(folders.Templates());
  if (!choice.design.empty() && !document::FindDesign(choice.design)) {
    const bool filled =
        !(choice.company + choice.web_site + choice.unsubscribe_address + choice.unsubscribe_subject).empty();
    if (filled && own.Has(choice.design))
      context.output.Note("Nothing is filled in: a template of yours is taken as it was kept.");
    return ShowLetter(context, choice.design, own.Read(choice.design), {});
  }
  if (const auto complaint = document::CheckDesign(choice)) return context.output.Complain(complaint->message);
  return ShowLetter(context, choice.design, document::LetterFrom(choice, folders.program),
                    document::DesignNotes(choice, folders.program));
}

void AddTemplate(CLI::App& compose, Context& context) {
  auto* letter =
      compose.add_subcommand("template", "A whole letter to begin with, from a design or a template of yours");
  const auto choice = std::make_shared<document::DesignChoice>();
  letter->add_option("NAME", choice->design,
                     "Government, Health, Legal, Sports, Travel, or one that `template list` shows");
  letter->add_option("--company", choice->company, "Your company, as the letter calls it");
  letter->add_option("--web", choice->web_site, "Your web site, without https://");
  letter->add_option("--unsubscribe", choice->unsubscribe_address, "Where those write who want no more letters");
  letter->add_option("--unsubscribe-subject", choice->unsubscribe_subject, "The subject of what they write");
  letter->footer(
      "The four options are for the designs; a template of yours is taken as it was kept.\n\nExample:\n"
      "  quillcast compose template Travel --company 'Blue Bay' --web www.example.org --unsubscribe leave@example.org "
      "--unsubscribe-subject Leave > letter.html");
  OnRun(*letter, context, [choice](Context& c) { return RunTemplate(c, *choice); });
}

}  // namespace

void AddComposeCommand(CLI::App& app, Context& context) {
  auto* compose = app.add_subcommand("compose", "Pieces of a letter, and whole letters to begin with, as HTML");
  compose->require_subcommand(1);
  compose->footer("Example: quillcast compose line --width 50 >> letter.html");
  AddLine(*compose, context);
  AddTable(*compose, context);
  AddDate(*compose, context);
  AddTemplate(*compose, context);
}

}  // namespace quillcast::cli

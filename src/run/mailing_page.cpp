#include "run/mailing_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>

#include "account/account_steps.h"
#include "html/safe_page.h"
#include "platform/text.h"
#include "run/frozen/frozen_text.h"
#include "run/mailing_tally.h"
#include "run/run_words.h"
#include "smtp/outcome_text.h"

namespace quillcast::run {
namespace {

constexpr std::size_t kMostBars = 12;
constexpr std::int64_t kMostNamed = 1000;

// Nothing is loaded and nothing runs, whatever stands in a name or a reply.
constexpr const char* kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<title>{0}</title>
<style>
:root {{ color-scheme: light dark; --sent: #2a7a4b; --other: #b4541e; --unknown: #7a5ea8; --left: #8a8f98; --line: #8884; }}
@media (prefers-color-scheme: dark) {{ :root {{ --sent: #57b37f; --other: #e08a52; --unknown: #ab92d6; --left: #8a8f98; }} }}
body {{ font: 16px/1.5 system-ui, sans-serif; max-width: 56rem; margin: 2rem auto; padding: 0 1rem; }}
h1 {{ font-size: 1.5rem; margin-bottom: 0; overflow-wrap: anywhere; }}
h2 {{ font-size: 1.1rem; margin-top: 2.2rem; }}
table {{ border-collapse: collapse; width: 100%; }}
th, td {{ text-align: left; padding: .25rem .6rem .25rem 0; border-bottom: 1px solid var(--line); vertical-align: top; overflow-wrap: anywhere; }}
.number {{ text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }}
tr.all td {{ font-weight: bold; }}
td.bar {{ width: 40%; vertical-align: middle; }}
td.bar div {{ display: flex; }} td.bar span {{ height: .8rem; min-width: 2px; }}
.sent {{ background: var(--sent); }} .other {{ background: var(--other); }} .unknown {{ background: var(--unknown); }} .left {{ background: var(--left); }}
.key::before {{ content: ""; display: inline-block; width: .8rem; height: .8rem; margin: 0 .4rem 0 .8rem; background: var(--colour); }}
svg {{ width: 100%; height: auto; }} svg .sent {{ fill: var(--sent); }} svg .other {{ fill: var(--other); }} svg .unknown {{ fill: var(--unknown); }} svg .left {{ fill: var(--left); }} svg text {{ fill: currentColor; font-size: 11px; }}
small {{ opacity: .75; font-weight: normal; }}
</style>
</head>
<body>
)";

// A fate as the tables, their key and the picture have it.
struct Shown {
  Fate fate;
  const char* name;
  const char* colour;  // of the style above
};
constexpr std::array<Shown, kFates> kShown = {{{Fate::kSent, "sent", "sent"},
                                               {Fate::kNotSent, "not sent", "other"},
                                               {Fate::kUnknown, "unknown", "unknown"},
                                               {Fate::kOnItsWay, "on its way", "left"},
                                               {Fate::kNotTried, "not tried", "left"}}};

const Shown& ShownOf(Fate fate) { return *std::ranges::find(kShown, fate, &Shown::fate); }

// Those of a list, named one by one.
struct Named {
  const char* heading;
  StateSet states;
};
const std::array<Named, 3>& AllNamed() {
  static const std::array<Named, 3> named = {
      {{"Who did not get it", WhoDidNotGetIt()},
       {"Who may have got it", SetOf({ResultState::kUnknown, ResultState::kInFlight})},
       {"Who was not tried", SetOf({ResultState::kNotTried})}}};
  return named;
}

std::string Safe(std::string_view text, std::size_t longest = 300) {
  return html::EscapedForHtml(platform::Printable(text, longest));
}

std::string Number(std::int64_t number) { return platform::WithThousands(number); }

std::string SpanOf(const RunEntry& run, const platform::Clock& clock) {
  const std::string began = MomentText(run.began, clock);
  if (run.ended && *run.ended == run.began) return "at " + began;
  if (run.ended) return fmt::format("from {} to {}", began, MomentText(*run.ended, clock));
  return run.standing == RunStanding::kGoesOn ? fmt::format("since {}, and it goes on", began)
                                              : fmt::format("from {} until it was cut off", began);
}

// As its messages name the sender; empty where the journal cannot give that any more.
std::string SenderOf(RunJournal& journal, MailingId mailing) {
  const auto frozen = ReadFrozen(journal, mailing);
  return frozen ? std::string(platform::Trim(account::TextsOf(frozen->inputs.account).from)) : std::string();
}

// In percent, to one place; all and nobody only where it is all and nobody.
double ShareOf(std::int64_t part, std::int64_t whole) {
  const double share = 100.0 * static_cast<double>(part) / static_cast<double>(whole);
  return part == 0 || part == whole ? share : std::clamp(share, 0.1, 99.9);
}

// One piece of a bar.
std::string Piece(const char* kind, std::int64_t part, std::int64_t whole) {
  if (part == 0 || whole == 0) return "";
  return fmt::format("<span class=\"{}\" style=\"width:{:.2f}%\"></span>", kind,
                     100.0 * static_cast<double>(part) / static_cast<double>(whole));
}

// Who is sent and who is not has a column always; the others where there is somebody.
bool IsColumn(Fate fate, const Tally& whole) {
  return fate == Fate::kSent || fate == Fate::kNotSent || whole.of(fate) > 0;
}

// Writes the page and remembers the first failure, behind which it writes nothing.
class Page {
 public:
  Page(const MailingEntry& mailing, const platform::Clock& clock,
       const std::function<Result<void>(std::string_view)>& write)
      : mailing_(mailing), clock_(clock), write_(write) {}

  void Begin(const std::string& sender);
  void States();
  void Bars(const char* heading, const char* what, std::vector<NamedTally> rows);
  void OverTime(const MailingTally& tally, std::chrono::sys_seconds first);
  void BeginNames(const char* heading);
  void Name(const JournalRow& row);
  void EndNames(std::int64_t more);
  void End() { Put("</body>\n</html>\n"); }
  const Result<void>& written() const { return written_; }

 private:
  void Put(const std::string& html) {
    if (written_) written_ = write_(html);
  }

  const MailingEntry& mailing_;
  const platform::Clock& clock_;
  const std::function<Result<void>(std::string_view)>& write_;
  Result<void> written_;
};

void Page::Begin(const std::string& sender) {
  const std::string subject = Safe(ReadableSubject(mailing_.subject));
  Put(fmt::format(fmt::runtime(kHead), subject));
  Put(fmt::format("<h1>{}</h1>\n<p>{} {} of the group {}.", subject,
                  sender.empty() ? "To" : "From " + Safe(sender) + " to",
                  platform::Counted(mailing_.recipients, "recipient", "recipients"), Safe(mailing_.group)));
  for (const RunEntry& run : mailing_.runs) {
    const char* what = run.kind == RunKind::kFirst    ? "Sent"
                       : run.kind == RunKind::kResume ? "The sending was taken up again"
                                                      : "Some were tried again";
    Put(fmt::format(" {} {}.", what, SpanOf(run, clock_)));
  }
  Put("</p>\n");
}

void Page::States() {
  Put("<h2>What became of the messages</h2>\n<table>\n");
  for (std::size_t n = 0; n < kResultStates; ++n) {
    const auto state = static_cast<ResultState>(n);
    const std::int64_t count = mailing_.counts[n];
    if (count == 0) continue;
    Put(
        fmt::format("<tr><th scope=\"row\">{}<br><small>{}</small></th><td class=\"number\">{}</td><td "
                    "class=\"number\">{:.1f} %</td><td class=\"bar\"><div>{}</div></td></tr>\n",
                    run::Name(state), MeaningOf(state), Number(count), ShareOf(count, mailing_.recipients),
                    Piece(ShownOf(FateOf(state)).colour, count, mailing_.recipients)));
  }
  Put("</table>\n");
}

void Page::Bars(const char* heading, const char* what, std::vector<NamedTally> rows) {
  if (rows.empty()) return;
  std::int64_t most = 0;
  NamedTally whole{"All", {}, {}};
  for (const auto& row : rows) {
    most = std::max(most, row.tally.all());
    whole.tally.Add(row.tally);
  }
  std::string key;
  std::string head;
  for (const Shown& shown : kShown) {
    if (!IsColumn(shown.fate, whole.tally)) continue;
    key += fmt::format("<span class=\"key\" style=\"--colour:var(--{})\">{}</span>", shown.colour, shown.name);
    head += fmt::format("<th class=\"number\">{}</th>", shown.name);
  }
  Put(fmt::format("<h2>{}</h2>\n<p>{}</p>\n<table>\n<tr><th>{}</th>{}<th></th></tr>\n", heading, key, what, head));
  rows.push_back(whole);
  for (const auto& row : rows) {
    const bool is_whole = &row == &rows.back();
    const std::string words = row.words.empty() ? "" : "<br><small>" + Safe(row.words, 160) + "</small>";
    std::string numbers;
    std::string bars;
    for (const Shown& shown : kShown) {
      if (!IsColumn(shown.fate, whole.tally)) continue;
      numbers += fmt::format("<td class=\"number\">{}</td>", Number(row.tally.of(shown.fate)));
      if (!is_whole) bars += Piece(shown.colour, row.tally.of(shown.fate), most);
    }
    Put(fmt::format("<tr{}><td>{}{}</td>{}<td class=\"bar\"><div>{}</div></td></tr>\n",
                    is_whole ? " class=\"all\"" : "", Safe(row.name), words, numbers, bars));
  }
  Put("</table>\n");
}

void Page::OverTime(const MailingTally& tally, std::chrono::sys_seconds first) {
  constexpr int kWidth = 720;
  constexpr int kHeight = 160;
  std::int64_t most = 1;
  for (const Tally& column : tally.columns()) most = std::max(most, column.all());
  const double wide = static_cast<double>(kWidth) / static_cast<double>(tally.columns().size());
  const auto high = [&](std::int64_t count) {
    return static_cast<double>(count * kHeight) / static_cast<double>(most);
  };
  Put(fmt::format(
      "<h2>Over time</h2>\n<svg viewBox=\"0 0 {} {}\" role=\"img\" aria-label=\"Results over time, at most {} "
      "in {} seconds\">\n",
      kWidth, kHeight + 36, Number(most), tally.step().count()));
  for (std::size_t n = 0; n < tally.columns().size(); ++n) {
    const Tally& column = tally.columns()[n];
    const double x = wide * static_cast<double>(n);
    double top = 0;
    for (const Shown& shown : kShown) {
      const std::int64_t count = column.of(shown.fate);
      if (count == 0) continue;
      top += high(count);
      Put(fmt::format(
          "<rect class=\"{}\" x=\"{:.2f}\" y=\"{:.2f}\" width=\"{:.2f}\" height=\"{:.2f}\"><title>{}: {} {}"
          "</title></rect>\n",
          shown.colour, x, 14 + kHeight - top, std::max(wide - 1, 0.5), high(count),
          MomentText(first + tally.step() * static_cast<std::int64_t>(n), clock_), Number(count), shown.name));
    }
  }
  const auto end = first + tally.step() * static_cast<std::int64_t>(tally.columns().size());
  Put(
      fmt::format("<text x=\"0\" y=\"10\">{} in {}</text>\n<text x=\"0\" y=\"{}\">{}</text>\n<text x=\"{}\" y=\"{}\" "
                  "text-anchor=\"end\">{}</text>\n</svg>\n",
                  Number(most), platform::Counted(tally.step().count(), "second", "seconds"), kHeight + 30,
                  MomentText(first, clock_), kWidth, kHeight + 30, MomentText(end, clock_)));
}

void Page::BeginNames(const char* heading) {
  Put(
      fmt::format("<h2>{}</h2>\n<table>\n<tr><th class=\"number\">#</th><th>Address</th><th>State</th>"
                  "<th>Why</th></tr>\n",
                  heading));
}

void Page::Name(const JournalRow& row) {
  std::string why = smtp::ReplyText(row.reply);
  if (why.empty()) why = row.reason;
  Put(fmt::format("<tr><td class=\"number\">{}</td><td>{}</td><td>{}</td><td>{}</td></tr>\n", Number(row.position),
                  Safe(row.recipient.email()), StandingOf(row), Safe(why)));
}

void Page::EndNames(std::int64_t more) {
  Put("</table>\n");
  if (more > 0) Put(fmt::format("<p>And {} more.</p>\n", Number(more)));
}

}  // namespace

Result<void> WriteMailingPage(RunJournal& journal, const MailingEntry& mailing, const platform::Clock& clock,
                              const platform::CancelToken& cancel,
                              const std::function<Result<void>(std::string_view html)>& write) {
  if (mailing.runs.empty()) return Error{Failure::kNoInput, "This mailing has no run.", "Name another one."};
  const auto first = mailing.runs.front().began;
  const auto last = mailing.runs.back().ended.value_or(std::chrono::floor<std::chrono::seconds>(clock.Now()));
  MailingTally tally(first, last);
  const auto is_cancelled = [&] { return cancel.Requested() != platform::Stop::kNone; };
  const auto counted = journal.Visit(mailing.id, StateSet().set(), 0, [&](const JournalRow& row) -> Result<bool> {
    tally.Add(row);
    return !is_cancelled();
  });
  if (!counted) return counted.error();
  if (is_cancelled()) return Error{Failure::kTryAgain, "The report was cancelled.", ""};

  Page page(mailing, clock, write);
  page.Begin(SenderOf(journal, mailing.id));
  page.States();
  page.Bars("By reply", "Reply", tally.Replies(kMostBars));
  page.Bars("By recipient domain", "Domain", tally.Domains(kMostBars));
  page.OverTime(tally, first);
  for (const Named& named : AllNamed()) {
    const std::int64_t all = CountIn(mailing.counts, named.states);
    if (all == 0) continue;
    page.BeginNames(named.heading);
    std::int64_t listed = 0;
    const auto visited = journal.Visit(mailing.id, named.states, 0, [&](const JournalRow& row) -> Result<bool> {
      page.Name(row);
      return ++listed < kMostNamed && page.written();
    });
    if (!visited) return visited.error();
    page.EndNames(all - listed);
  }
  page.End();
  return page.written();
}

}  // namespace quillcast::run

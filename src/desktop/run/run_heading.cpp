#include "desktop/run/run_heading.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "account/account_pace.h"
#include "desktop/run/run_pace_form.h"
#include "desktop/widgets/breakable.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/isolated.h"
#include "desktop/widgets/qt_text.h"
#include "platform/text.h"
#include "run/pace/pace_words.h"

namespace quillcast::desktop {
namespace {

constexpr int kLongestWord = 50;  // a subject or a server may be one

}  // namespace

RunHeading::RunHeading(const profile::Program& program, const std::string& subject, const run::ChosenGroup& group,
                       Server server, QWidget* parent)
    : QWidget(parent),
      program_(program),
      shown_(program.settings, server, account::ShownRoute::Sender::kOfTheAccount),
      route_(new QLabel(this)),
      pace_line_(new QLabel(this)),
      pace_button_(new QPushButton(tr("Pa&ce…"), this)) {
  auto* what = new QLabel(this);
  what->setObjectName("HeadingLabel");
  const QString sentence = tr("“%1” to %2, %3")
                               .arg(Isolated(ToQt(platform::Printable(subject, 100))),
                                    Isolated(ToQt(platform::Printable(group.group.name, 60))),
                                    Counted(group.recipients, tr("1 recipient"), tr("%1 recipients")));
  what->setText(Breakable(sentence, kLongestWord));
  QFont bold = what->font();
  bold.setBold(true);
  what->setFont(bold);
  route_->setObjectName("RouteLabel");
  pace_line_->setObjectName("PaceLabel");
  pace_button_->setObjectName("PaceButton");
  pace_button_->setAccessibleName(tr("Pace, retries and connections of this run"));
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(0, 0, 0, 0);
  auto* column = new QVBoxLayout();
  line->addLayout(column, 1);
  line->addWidget(pace_button_, 0, Qt::AlignTop);
  for (QLabel* label : {what, route_, pace_line_}) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    column->addWidget(label);
  }
  connect(pace_button_, &QPushButton::clicked, this, &RunHeading::ChoosePace);
  ShowRoute();
  ShowPace();
}

void RunHeading::GoesOnWith(const std::string& from, const run::PaceTexts& told) {
  shown_ = account::ShownRoute(program_.settings, shown_.is_practice() ? Server::kPractice : Server::kReal,
                               account::ShownRoute::Sender::kItsOwn);
  from_ = from;
  told_ = told;
  ShowRoute();
  ShowPace();
}

std::optional<Error> RunHeading::TakeChange() {
  auto change = shown_.TakeChange();
  if (change) ShowRoute();
  return change;
}

void RunHeading::ShowRoute() {
  const account::Route& route = shown_.route();
  const QString named = ToQt(platform::Printable(route.from.value_or(from_), 120));
  const QString from = named.isEmpty() ? tr("its sender") : Isolated(named);
  route_->setText(Breakable(
      shown_.is_practice() ? tr("Practice: from %1 to the mailbox on this machine, and nowhere else").arg(from)
                           : tr("From %1 over %2").arg(from, Isolated(ToQt(platform::Printable(route.servers, 200)))),
      kLongestWord));
}

void RunHeading::ShowPace() {
  pace_line_->setText(PaceText());
  pace_line_->setHidden(pace_line_->text().isEmpty());
}

// How fast it goes; nothing where it goes as fast as it can and nobody chose that. What cannot be read is told by the
// run.
QString RunHeading::PaceText() const {
  const platform::CancelToken none;
  auto run = run::Prepare({}, run::ChosenGroup{}, run::PlaceOf(program_, none, profile::kWindowPatience));
  run.Ask(run::Or(pace_, told_));
  const auto pace = run.Pace();
  if (!pace) return {};
  QStringList told = InWords(run::WordsOf(*pace));
  if (pace->rules.begin > program_.clock.Now()) {
    told << tr("not before %1").arg(ToQt(run::TimeText(*pace->rules.begin, program_.clock)));
  }
  const QString words = told.join(", ");
  if (pace_ != run::PaceTexts()) {
    return tr("Pace: %1 (for this run alone)").arg(words.isEmpty() ? tr("as fast as it goes") : words);
  }
  if (words.isEmpty()) return {};
  return told_ != run::PaceTexts() ? tr("Pace: %1 (as this run was told before, else the mail account)").arg(words)
                                   : tr("Pace: %1 (the page Pace of the mail account)").arg(words);
}

void RunHeading::ChoosePace() {
  emit Choosing();
  const auto otherwise = [this]() -> Result<run::PaceTexts> {
    const auto account = account::AccountSettings::Load(program_.settings);
    if (!account) return account.error();
    return run::Or(told_, account::PaceTextsOf(*account));
  };
  RunPaceForm form(otherwise, pace_, change_account, program_.clock, window());
  if (form.exec() == QDialog::Accepted) pace_ = form.chosen();
  TakeChange();
  ShowPace();
  emit Chosen();
}

void RunHeading::Begins() { pace_button_->setEnabled(false); }

}  // namespace quillcast::desktop

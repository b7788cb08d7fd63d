#include "desktop/recipients/recipient_search_form.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTimer>
#include <mutex>

#include "desktop/recipients/grid_actions.h"
#include "desktop/recipients/recipient_grid.h"
#include "desktop/recipients/work_panel.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {
namespace {

constexpr int kSearchTick = 20;  // milliseconds
constexpr int kAnswerTime = 50;  // milliseconds; longer, and somebody who types has to wait

Result<void> SearchGroup(const recipients::RecipientStore& store, std::string_view group,
                         recipients::SearchRequest request,
                         const std::function<void(std::int64_t group_id, std::int64_t key)>& found) {
  const auto there = store.RequireGroup(group);
  if (!there) return there.error();
  request.group_id = there->id;
  return recipients::Search(store, request, [&](std::int64_t key) { return found(there->id, key), true; });
}

}  // namespace

struct RecipientSearchForm::News {
  std::mutex mutex;
  std::int64_t group_id = 0;
  std::vector<std::int64_t> keys;  // found, and not yet shown
};

RecipientSearchForm::RecipientSearchForm(const profile::Program& program, QString group, QWidget* parent)
    : QDialog(parent),
      program_(program),
      group_(std::move(group)),
      task_(new BackgroundTask(this)),
      tick_(new QTimer(this)),
      answer_time_(new QTimer(this)),
      field_(new QComboBox(this)),
      compare_(new QComboBox(this)),
      term_(new QLineEdit(this)),
      search_(new QPushButton(tr("&Search"), this)),
      rows_(new RecipientRows(program.folders.Database(), this)),
      grid_(MakeRecipientGrid(rows_, this)),
      actions_(grid_->findChild<GridActions*>()),
      status_(new StatusLine(this)),
      work_(new WorkPanel(program, this)) {
  answer_time_->setSingleShot(true);
  MakeWindow();
  connect(search_, &QPushButton::clicked, this, &RecipientSearchForm::Search);
  connect(term_, &QLineEdit::textChanged, this, &RecipientSearchForm::SearchAsTyped);
  connect(field_, &QComboBox::currentIndexChanged, this, &RecipientSearchForm::SearchAsTyped);
  connect(compare_, &QComboBox::currentIndexChanged, this, &RecipientSearchForm::SearchAsTyped);
  connect(tick_, &QTimer::timeout, this, &RecipientSearchForm::TakeNews);
  connect(answer_time_, &QTimer::timeout, this, &RecipientSearchForm::GiveUpTyped);
  connect(grid_, &RowList::doubleClicked, this, &RecipientSearchForm::Modify);
  connect(
      rows_, &RecipientRows::Trouble, status_, [this](const QString& why) { status_->Say(why, NoteKind::kFailure); },
      Qt::QueuedConnection);
  AddKeys();
  connect(work_, &WorkPanel::Started, this, [this] { EnableControls(false); });
  connect(work_, &WorkPanel::Ended, this, [this] { EnableControls(true); });
  term_->setFocus();
}

RecipientSearchForm::~RecipientSearchForm() = default;

// In the grid Return would otherwise press the window's own button, which searches.
void RecipientSearchForm::AddKeys() {
  const auto add = [this](const QKeySequence& keys, auto act) {
    auto* shortcut = new QShortcut(keys, grid_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(shortcut, &QShortcut::activated, this, act);
  };
  add(QKeySequence(Qt::Key_Return), &RecipientSearchForm::Modify);
  add(QKeySequence(Qt::Key_Enter), &RecipientSearchForm::Modify);
  add(QKeySequence::Delete, &RecipientSearchForm::Delete);
  connect(actions_, &GridActions::Said, this, [this](const QString& sentence) { status_->Say(sentence); });
  connect(actions_, &GridActions::Failed, this, [this](const Error& error) { status_->Fail(error); });
}

void RecipientSearchForm::MakeWindow() {
  setObjectName("RecipientSearchForm");
  setWindowTitle(tr("Search “%1”").arg(ToQt(platform::Printable(FromQt(group_), 60))));
  resize(680, 480);
  for (const std::string_view label : recipients::SearchLabels()) field_->addItem(Translated(label));
  for (const std::string_view label : recipients::kComparisonLabels) compare_->addItem(Translated(label));
  search_->setObjectName("SearchButton");
  search_->setDefault(true);
  ShowNobody();
  auto* column = new FormColumn(this);
  FormGrid* what = column->AddGrid();
  what->Add("FieldComboBox", tr("&Field:"), field_);
  what->Add("CompareComboBox", tr("&Comparison:"), compare_);
  what->Add("EntryTextBox", tr("Search &term:"), term_, {search_});
  column->Add(grid_, 1);
  work_->ShareLine();
  line_ = column->Add(new QStackedWidget(this));
  line_->addWidget(status_);
  line_->addWidget(work_);
  line_->setMinimumHeight(work_->sizeHint().height());  // so that nothing moves when work begins
  AddButtons(column);
}

void RecipientSearchForm::AddButtons(FormColumn* column) {
  const auto make = [this](const char* name, const QString& text, auto press) {
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, press);
    return button;
  };
  buttons_ = {make("ModifyButton", tr("&Modify…"), [this] { Modify(); }),
              make("DeleteButton", tr("&Delete"), [this] { Delete(); }),
              make("MoveButton", tr("Mo&ve or Copy…"), [this] { Move(); }),
              make("PrintButton", tr("&Print…"), [this] { Print(); })};
  column->AddLine({buttons_[0], buttons_[1], buttons_[2], buttons_[3], nullptr,
                   make("CloseButton", tr("Close"), [this] { reject(); })});
}

void RecipientSearchForm::EnableControls(bool is_idle) {
  for (QWidget* control : std::initializer_list<QWidget*>{field_, compare_, term_, search_, grid_})
    control->setEnabled(is_idle);
  for (QPushButton* button : buttons_) button->setEnabled(is_idle);
  if (!is_idle) status_->Say({});
  line_->setCurrentWidget(is_idle ? static_cast<QWidget*>(status_) : work_);
}

recipients::SearchRequest RecipientSearchForm::Request() const {
  return {.group_id = 0,
          .field = static_cast<std::size_t>(field_->currentIndex()),
          .comparison = static_cast<recipients::Comparison>(compare_->currentIndex()),
          .term = FromQt(term_->text())};
}

void RecipientSearchForm::Search() {
  if (const auto complaint = recipients::CheckSearchTerm(FromQt(term_->text()))) {
    program_.prompts.Warn(complaint->message);
    term_->setFocus();
    return;
  }
  told_.clear();
  Start(Kind::kAsked, Request());
}

void RecipientSearchForm::SearchAsTyped() {
  if (term_->text().isEmpty()) {
    GiveUpSearch();
    ShowNobody();
    status_->Say({});
  } else if (!answers_at_once_) {
    status_->Say(tr("Press Search: this group takes too long to be searched while you type."));
  } else {
    told_.clear();
    Start(Kind::kTyped, Request());
  }
}

void RecipientSearchForm::GiveUpSearch() {
  task_->GiveUp();
  tick_->stop();
  answer_time_->stop();
}

void RecipientSearchForm::ShowNobody() {
  rows_->Reset({}, 0);
  grid_->Reset(0);
  grid_->SetEmptyText(tr("Those who are found stand here. Type what to look for; “All fields” looks everywhere."));
}

void RecipientSearchForm::Start(Kind kind, const recipients::SearchRequest& request) {
  if (kind == Kind::kAsked) {
    rows_->Reset({}, 0);
    grid_->Reset(0);
    status_->Say(tr("Searching…"));
  }
  request_ = request;
  news_ = std::make_shared<News>();
  task_->Start([this, file = program_.folders.Database(), group = FromQt(group_), request, news = news_,
                kind](const platform::CancelToken& cancel) {
    const auto done = SearchGroup(recipients::RecipientStore(file, {.cancel = &cancel}), group, request,
                                  [&](std::int64_t id, std::int64_t key) {
                                    const std::lock_guard lock(news->mutex);
                                    news->group_id = id;
                                    news->keys.push_back(key);
                                  });
    return [this, kind, done] { End(kind, done); };
  });
  kind == Kind::kAsked ? tick_->start(kSearchTick) : tick_->stop();
  answer_time_->start(kAnswerTime);
}

void RecipientSearchForm::TakeNews() {
  std::vector<std::int64_t> keys;
  std::int64_t group_id = 0;
  {
    const std::lock_guard lock(news_->mutex);
    keys.swap(news_->keys);
    group_id = news_->group_id;
  }
  if (keys.empty()) return;
  rows_->size() == 0 ? rows_->Reset(std::move(keys), group_id) : rows_->Append(keys);
  grid_->Grow(rows_->size());
}

// What was found before stays; a search that was asked for goes on.
void RecipientSearchForm::GiveUpTyped() {
  if (!task_->is_running() || tick_->isActive()) return;
  answers_at_once_ = false;
  task_->Cancel();
  SearchAsTyped();
}

void RecipientSearchForm::End(Kind kind, const Result<void>& done) {
  tick_->stop();
  const bool was_at_once = answer_time_->isActive();
  answer_time_->stop();
  if (kind == Kind::kTyped && !answers_at_once_) return;
  answers_at_once_ = was_at_once;
  if (kind == Kind::kTyped) {
    rows_->Reset({}, 0);
    grid_->Reset(0);
  }
  TakeNews();
  if (done) {
    SayFound();
  } else {
    status_->Fail(done.error());
  }
}

void RecipientSearchForm::SayFound() {
  const auto found = static_cast<std::int64_t>(rows_->size());
  if (!told_.isEmpty()) {
    grid_->SetEmptyText(tr("Nobody is left of those who were found."));
    const QString left =
        found == 0 ? tr("Nobody is left.") : Counted(found, tr("1 recipient is left."), tr("%1 recipients are left."));
    return status_->Say(told_ + ' ' + left);
  }
  grid_->SetEmptyText(tr("Nobody here. Look for less of it, by “Contains”, or in “All fields”."));
  status_->Say(found == 0 ? tr("Nobody was found.")
                          : Counted(found, tr("1 recipient was found."), tr("%1 recipients were found.")));
}

void RecipientSearchForm::reject() {
  if (work_->is_working()) return work_->Cancel();
  QDialog::reject();
}

}  // namespace quillcast::desktop

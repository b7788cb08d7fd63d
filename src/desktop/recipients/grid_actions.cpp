#include "desktop/recipients/grid_actions.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <algorithm>
#include <array>

#include "desktop/recipients/recipient_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

using recipients::RecipientStore;

constexpr std::size_t kCopiedAtOnce = 10'000;

Result<QString> TextOfRows(const RecipientStore& store, std::span<const std::int64_t> keys, std::int64_t group_id) {
  QString text;
  for (std::size_t at = 0; at < keys.size(); at += kCopiedAtOnce) {
    const auto rows = store.RowsOfKeys(keys.subspan(at, std::min(kCopiedAtOnce, keys.size() - at)), group_id);
    if (!rows) return rows.error();
    text += ToQt(recipients::AsText(*rows));
  }
  return text;
}

}  // namespace

GridActions::GridActions(RecipientRows* rows, RowList* list)
    : QObject(list), rows_(rows), list_(list), type_ahead_(new BackgroundTask(this)), copy_(new BackgroundTask(this)) {
  list_->setContextMenuPolicy(Qt::ActionsContextMenu);
  connect(list_, &RowList::ChosenChanged, this, [this] { means_current_ = false; });
  list_->viewport()->installEventFilter(this);
  list_->OnTyping([this](const QString& text) { TypeAhead(text); });
  Add("CopyAction", tr("&Copy as Text"), QKeySequence::Copy, [this] { Copy(); });
  Add("SelectAllAction", tr("Select &All"), QKeySequence::SelectAll, [this] { list_->selectAll(); });
}

GridActions::~GridActions() = default;

void GridActions::Add(const char* name, const QString& text, const QKeySequence& keys,
                      const std::function<void()>& act) {
  auto* action = new QAction(text, this);
  action->setObjectName(name);
  action->setShortcutContext(Qt::WidgetShortcut);
  action->setShortcut(keys);
  connect(action, &QAction::triggered, this, act);
  list_->addAction(action);
}

void GridActions::AddOrders() {
  constexpr std::array kNames = {"OrderOfGroupAction", "OrderByFirstNameAction", "OrderByLastNameAction",
                                 "OrderByAddressAction"};
  const std::array texts = {tr("Show in the Group's &Order"), tr("Show by &First Name"), tr("Show by &Last Name"),
                            tr("Show by &Email Address")};
  for (std::size_t column = 0; column < kNames.size(); ++column) {
    Add(kNames.at(column), texts.at(column), {}, [this, column] { emit HeadingPressed(static_cast<int>(column)); });
  }
  list_->horizontalHeader()->setSectionsClickable(true);
  connect(list_->horizontalHeader(), &QHeaderView::sectionClicked, this, &GridActions::HeadingPressed);
}

void GridActions::ShowOrder(recipients::ViewOrder order) {
  list_->horizontalHeader()->setSortIndicatorShown(order.column > 0);
  list_->horizontalHeader()->setSortIndicator(order.column, order.descends ? Qt::DescendingOrder : Qt::AscendingOrder);
}

std::optional<GridActions::OneRow> GridActions::TakeOne() {
  const std::vector<std::size_t> chosen = Meant();
  if (chosen.empty()) return {};
  const auto current = static_cast<std::size_t>(std::max(list_->currentIndex().row(), 0));
  const std::size_t row = std::binary_search(chosen.begin(), chosen.end(), current) ? current : chosen.front();
  const auto texts = rows_->ReadNow(row);
  if (!texts) {
    list_->viewport()->update();
    emit Failed(texts.error());
    return {};
  }
  if (chosen.size() > 1) {
    emit Said(tr("%1 recipients are chosen. This is for one, the current row: %2.")
                  .arg(ToQt(platform::WithThousands(static_cast<std::int64_t>(chosen.size()))),
                       ToQt(platform::Printable(texts->email))));
  }
  return OneRow{row, *texts};
}

std::vector<std::int64_t> GridActions::ChosenKeys() const {
  std::vector<std::int64_t> keys;
  for (const std::size_t row : list_->Chosen()) keys.push_back(rows_->keys()[row]);
  return keys;
}

std::vector<std::size_t> GridActions::Meant() const {
  auto rows = list_->Chosen();
  if (rows.empty() && means_current_ && list_->currentIndex().isValid())
    rows.push_back(static_cast<std::size_t>(list_->currentIndex().row()));
  return rows;
}

// A press beside the rows means nobody, and changes nothing where nobody was chosen.
bool GridActions::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress) means_current_ = false;
  return QObject::eventFilter(watched, event);
}

void GridActions::Remove(std::span<const std::size_t> rows, Nearest nearest) {
  const recipients::ListPlace before = Place();
  const auto left_above = [rows](std::size_t row) {
    return row - static_cast<std::size_t>(std::lower_bound(rows.begin(), rows.end(), row) - rows.begin());
  };
  rows_->Remove(rows);
  list_->Reset(rows_->size());
  const recipients::ListPlace place{left_above(before.current), left_above(before.top), before.height};
  if (nearest == Nearest::kChosen || rows_->size() == 0) return GoTo(place);
  list_->MakeCurrent(std::min(place.current, rows_->size() - 1));
  list_->verticalScrollBar()->setValue(static_cast<int>(place.top));
  means_current_ = true;
}

recipients::ListPlace GridActions::Place() const {
  const int height = list_->viewport()->height() / std::max(list_->verticalHeader()->defaultSectionSize(), 1);
  return {static_cast<std::size_t>(std::max(list_->currentIndex().row(), 0)),
          static_cast<std::size_t>(std::max(list_->verticalScrollBar()->value(), 0)),
          static_cast<std::size_t>(std::max(height, 1))};
}

void GridActions::GoTo(const recipients::ListPlace& place) {
  if (rows_->size() == 0) return;
  list_->Choose(std::min(place.current, rows_->size() - 1));
  list_->verticalScrollBar()->setValue(static_cast<int>(place.top));
}

// As lists do it: what is typed without a pause is one beginning; the same letter again goes on to the next such row.
void GridActions::TypeAhead(const QString& text) {
  const bool goes_on = since_typed_.isValid() && since_typed_.elapsed() < QApplication::keyboardInputInterval();
  since_typed_.start();
  const bool is_repeated = goes_on && typed_ == text;
  if (!is_repeated) typed_ = goes_on ? typed_ + text : text;
  const auto from = static_cast<std::size_t>(std::max(list_->currentIndex().row(), 0));
  const std::size_t begin = from + (goes_on && !is_repeated ? 0 : 1);
  type_ahead_->Start([this, file = rows_->file(), keys = rows_->keys(), group_id = rows_->group_id(), begin,
                      typed = FromQt(typed_)](const platform::CancelToken& cancel) {
    const auto found = NextBeginningWith(RecipientStore(file, {.cancel = &cancel}), keys, begin, typed, group_id);
    const std::int64_t key = found && *found ? keys[**found] : 0;
    return [this, found, key] {
      if (!found) return emit Failed(found.error());
      if (*found && **found < rows_->size() && rows_->keys()[**found] == key) list_->Choose(**found);
    };
  });
}

void GridActions::Copy() {
  std::vector<std::int64_t> keys = ChosenKeys();
  if (keys.empty()) return;
  copy_->Start([this, file = rows_->file(), group_id = rows_->group_id(),
                keys = std::move(keys)](const platform::CancelToken& cancel) {
    const auto text = TextOfRows(RecipientStore(file, {.cancel = &cancel}), keys, group_id);
    return [this, text, count = static_cast<std::int64_t>(keys.size())] {
      if (!text) return emit Failed(text.error());
      QGuiApplication::clipboard()->setText(*text);
      emit Said(Counted(count, tr("1 recipient was copied as text."), tr("%1 recipients were copied as text.")));
    };
  });
}

}  // namespace quillcast::desktop

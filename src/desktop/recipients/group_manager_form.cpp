// The window itself, and how a group is read into it; what its buttons do stands in group_manager_commands.cpp.
#include "desktop/recipients/group_manager_form.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/recipients/grid_actions.h"
#include "desktop/recipients/recipient_grid.h"
#include "desktop/recipients/work_panel.h"
#include "desktop/widgets/folding_line.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"
#include "recipients/edit/undo.h"
#include "recipients/group_checks.h"

namespace quillcast::desktop {
namespace {

constexpr int kGap = 6;                   // between the buttons of a group
constexpr int kShownName = 24;            // characters of a group, at the least
constexpr std::size_t kLongestName = 60;  // of a group within a sentence

}  // namespace

struct GroupManagerForm::Reading {
  QString group;
  std::optional<recipients::GroupView> view;  // none where the group is gone
  recipients::ListPlace place;
};

GroupManagerForm::GroupManagerForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      groups_(new QComboBox(this)),
      total_(new QLabel(this)),
      rows_(new RecipientRows(program.folders.Database(), this)),
      grid_(MakeRecipientGrid(rows_, this)),
      actions_(grid_->findChild<GridActions*>()),
      work_(new WorkPanel(program, this)),
      status_(new StatusLine(this)) {
  setObjectName("GroupManagerForm");
  setWindowTitle(tr("Group Manager"));
  resize(860, 560);
  MakeWindow();
  AddKeys();
  ConnectParts();
  FillGroups({});
  ShowTotal();
  ShowUndo();
  groups_->setFocus();
}

QPushButton* GroupManagerForm::MakeButton(const char* name) {
  const auto commands = Commands();
  const auto command = std::find_if(commands.begin(), commands.end(),
                                    [name](const Command& row) { return std::string_view(row.name) == name; });
  auto* button = new QPushButton(tr(command->text), this);
  button->setObjectName(name);
  button->setAutoDefault(false);  // Return in the grid modifies; in the list of groups it does nothing
  connect(button, &QPushButton::clicked, this, [this, command] { Run(*command); });
  return button;
}

std::vector<QWidget*> GroupManagerForm::MakeButtons(std::initializer_list<const char*> names) {
  std::vector<QWidget*> buttons;
  for (const char* name : names) buttons.push_back(name == nullptr ? nullptr : MakeButton(name));
  return buttons;
}

// The groups above, the recipients with what can be done with them in the middle, and what is done with a whole group
// below.
void GroupManagerForm::MakeWindow() {
  groups_->setObjectName("GroupComboBox");
  groups_->setPlaceholderText(tr("Choose a group"));
  groups_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  groups_->setSizeAdjustPolicy(
      QComboBox::AdjustToMinimumContentsLengthWithIcon);  // a long name is not the window's width
  groups_->setMinimumContentsLength(kShownName);
  auto* label = new QLabel(tr("&Group:"), this);
  label->setObjectName("NameLabel");
  label->setBuddy(groups_);
  groups_->setAccessibleName(tr("Group"));
  total_->setObjectName("Total");
  auto* column = new FormColumn(this);
  std::vector<QWidget*> above = {label, groups_};
  for (QWidget* button : MakeButtons({"NewGroupButton", "RenameGroupButton", "DeleteGroupButton"}))
    above.push_back(button);
  column->AddLine(above);
  auto* middle = new QWidget(this);
  auto* line = new QHBoxLayout(middle);
  line->setContentsMargins(0, 0, 0, 0);
  LetFollow(grid_);
  line->addWidget(grid_, 1);
  auto* beside = new QVBoxLayout();
  for (QWidget* button : MakeButtons({"AddButton", "ModifyButton", "DeleteButton", "MoveButton", "SearchButton",
                                      "DuplicatesButton", "WhereButton", nullptr, "UndoButton"})) {
    if (button == nullptr) {
      beside->addStretch(1);
    } else {
      LetFollow(button);
      beside->addWidget(button);
    }
  }
  line->addLayout(beside);
  column->Add(middle, 1);
  work_->ShareLine();
  column->AddLine({new QLabel(tr("Recipients:"), this), total_, work_});
  column->Add(status_);
  auto* below = new QWidget(this);
  auto* of_group = new FoldingLine(below, kGap);
  for (QWidget* button :
       MakeButtons({"ImportButton", "ExportButton", "CapitalizeButton", "SortButton", "MergeButton", "PrintButton"})) {
    LetFollow(button);
    of_group->addWidget(button);
  }
  column->Add(below);
  column->AddLine({nullptr, MakeButton("CloseButton")});
}

void GroupManagerForm::AddKeys() {
  const auto add = [this](const QKeySequence& keys, const char* name) {
    auto* shortcut = new QShortcut(keys, grid_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(shortcut, &QShortcut::activated, findChild<QPushButton*>(name), &QPushButton::click);
  };
  add(QKeySequence(Qt::Key_Insert), "AddButton");
  add(QKeySequence(Qt::Key_Return), "ModifyButton");
  add(QKeySequence(Qt::Key_Enter), "ModifyButton");
  add(QKeySequence::Delete, "DeleteButton");
  add(QKeySequence::Find, "SearchButton");
  add(QKeySequence::Undo, "UndoButton");
}

void GroupManagerForm::ConnectParts() {
  actions_->AddOrders();
  connect(actions_, &GridActions::HeadingPressed, this, &GroupManagerForm::SortView);
  connect(actions_, &GridActions::Said, this, &GroupManagerForm::Say);
  connect(actions_, &GridActions::Failed, this, &GroupManagerForm::Fail);
  connect(grid_, &RowList::doubleClicked, findChild<QPushButton*>("ModifyButton"), &QPushButton::click);
  connect(
      rows_, &RecipientRows::Trouble, status_, [this](const QString& why) { status_->Say(why, NoteKind::kFailure); },
      Qt::QueuedConnection);
  connect(groups_, &QComboBox::currentIndexChanged, this, &GroupManagerForm::ChooseGroup);
  connect(work_, &WorkPanel::Started, this, [this] { EnableControls(false); });
  connect(work_, &WorkPanel::Ended, this, [this] { EnableControls(true); });
}

void GroupManagerForm::EnableControls(bool enabled) {
  if (!enabled) focus_ = focusWidget();
  for (QPushButton* button : findChildren<QPushButton*>()) {
    if (button->objectName() != "CancelButton") button->setEnabled(enabled);
  }
  UndoButton().setEnabled(enabled && can_undo_);
  groups_->setEnabled(enabled);
  grid_->setEnabled(enabled);
  if (enabled && focus_) focus_->setFocus();
}

QString GroupManagerForm::Group() const { return groups_->currentText(); }

recipients::RecipientStore GroupManagerForm::Store() const {
  return recipients::RecipientStore(program_.folders.Database(), profile::kWindowPatience);
}

void GroupManagerForm::Say(const QString& sentence) { status_->Say(sentence); }

void GroupManagerForm::Fail(const Error& error) { status_->Fail(error); }

void GroupManagerForm::FailWork(const Error& error) { status_->Say(InWords(error), work_->KindOfFailure()); }

// What stands in the grid stays as it is where `chosen` is the group that is shown.
void GroupManagerForm::FillGroups(const QString& chosen) {
  const auto names = Store().ListGroupNames();
  if (!names) return status_->Fail(names.error());
  const QSignalBlocker quiet(groups_);
  groups_->clear();
  for (const std::string& name : *names) groups_->addItem(ToQt(name));
  groups_->setCurrentIndex(groups_->findText(chosen));
  grid_->SetEmptyText(names->empty() ? tr("No group has been made yet. Press “New Group…” to make one.")
                                     : tr("Choose a group above to see who is in it."));
}

void GroupManagerForm::ChooseGroup() {
  view_ = {};
  status_->Say({});
  ReadGroup();
}

void GroupManagerForm::ReadAgain() {
  if (!work_->is_working() && !Group().isEmpty()) ReadGroup();
}

void GroupManagerForm::ReadGroup() {
  is_reading_ = true;
  total_->setText(tr("Reading Group"));
  const auto before = Group() == shown_ ? rows_->keys() : std::vector<std::int64_t>();
  work_->Run<Reading>(
      [group = Group(), view = view_, before, place = actions_->Place()](
          recipients::RecipientStore& store, const recipients::OnProgress& progress) -> Result<Reading> {
        auto read = recipients::ViewGroup(store, FromQt(group), view, progress);
        if (!read) return read.error();
        Reading reading{group, std::move(*read), {}};
        if (reading.view) reading.place = recipients::PlaceAfterwards(before, place, reading.view->keys);
        return reading;
      },
      [this](const Result<Reading>& reading) { ShowRead(reading); });
}

void GroupManagerForm::ShowRead(const Result<Reading>& reading) {
  is_reading_ = false;
  if (reading) return reading->view ? ShowGroup(*reading) : ShowGone(reading->group);
  // The grid stays as it was, and so does what the list says of it.
  const QSignalBlocker quiet(groups_);
  groups_->setCurrentIndex(groups_->findText(shown_));
  ShowTotal();
  status_->Fail(reading.error());
}

void GroupManagerForm::ShowGroup(const Reading& reading) {
  shown_ = reading.group;
  count_ = reading.view->count;
  is_order_understood_ = reading.view->is_order_understood;
  rows_->Reset(reading.view->keys, reading.view->group_id);
  grid_->SetEmptyText(
      is_order_understood_
          ? tr("Nobody is in this group yet. “Add…” enters a recipient, “Import…” takes many from a file.")
          : tr("The recipients are there, but not in an order that can be shown. “Sort by…” sets another."));
  grid_->Reset(rows_->size());
  actions_->GoTo(reading.place);
  actions_->ShowOrder(view_);
  ShowTotal();
  ShowUndo();  // another program may have changed something
  SayOrder();
}

void GroupManagerForm::SayOrder(const QString& told) {
  if (is_order_understood_) return;
  const QString why =
      tr("The stored order of this group is not understood, so nobody is listed. “Sort by…” sets another.");
  status_->Say(told.isEmpty() ? why : told + ' ' + why, NoteKind::kWarning);
}

void GroupManagerForm::ShowNone() {
  shown_.clear();
  view_ = {};
  count_ = 0;
  is_order_understood_ = true;
  rows_->Reset({}, 0);
  grid_->Reset(0);
  FillGroups({});
  total_->setText("0");
  ShowUndo();  // what another program has deleted can be taken back here
}

void GroupManagerForm::ShowGone(const QString& group) {
  ShowNone();
  status_->Say(tr("The group “%1” is no longer there. Another program has deleted it or given it another name.")
                   .arg(ToQt(platform::Printable(FromQt(group), kLongestName))),
               NoteKind::kWarning);
  TellGroups(group, {});
}

// A second press on a heading turns its order round; one on the first column is the group's own order.
void GroupManagerForm::SortView(int column) {
  if (shown_.isEmpty() || work_->is_working()) return;
  view_ = {.column = column, .descends = column != 0 && column == view_.column && !view_.descends};
  ReadGroup();
}

void GroupManagerForm::ShowTotal() {
  total_->setText(shown_.isEmpty() ? QString() : ToQt(platform::WithThousands(count_)));
}

// What can be taken back stands in its button's tip; it may be from another day.
void GroupManagerForm::ShowUndo() {
  const auto step = recipients::FindUndo(Store());
  const bool is_there = step && *step;
  can_undo_ = is_there || !step;                                        // where it is not known, the command says why
  if (!can_undo_ && focusWidget() == &UndoButton()) grid_->setFocus();  // else a command would get it, the next one
  UndoButton().setEnabled(can_undo_ && !work_->is_working());
  UndoButton().setToolTip(is_there ? PlainTip(InWords(recipients::UndoQuestion(**step)))
                                   : tr("There is nothing to take back."));
}

QPushButton& GroupManagerForm::UndoButton() const { return *findChild<QPushButton*>("UndoButton"); }

void GroupManagerForm::TellGroups(const QString& before, const QString& now) { emit GroupsChanged(before, now); }

void GroupManagerForm::reject() {
  if (work_->is_working() && !is_reading_) return work_->Cancel();
  QDialog::reject();
}

}  // namespace quillcast::desktop

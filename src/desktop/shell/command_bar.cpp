#include "desktop/shell/command_bar.h"

#include <QAction>
#include <QComboBox>
#include <QCoreApplication>
#include <QFontComboBox>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSignalBlocker>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <array>

#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "document/merge_fields.h"

namespace quillcast::desktop {
namespace {

using enum CommandId;

// A menu: of the bar, or of the menu that it stands in, where its first command comes.
struct MenuRow {
  Menu menu;
  const char* title;
  Menu inside;
  const char* name = "";
};
constexpr auto kMenus = std::to_array<MenuRow>({
    {Menu::kFile, QT_TRANSLATE_NOOP("CommandBar", "&File"), Menu::kFile},
    {Menu::kEdit, QT_TRANSLATE_NOOP("CommandBar", "&Edit"), Menu::kEdit},
    {Menu::kZoom, QT_TRANSLATE_NOOP("CommandBar", "&Zoom"), Menu::kZoom},
    {Menu::kInsert, QT_TRANSLATE_NOOP("CommandBar", "&Insert"), Menu::kInsert},
    {Menu::kMergeTag, QT_TRANSLATE_NOOP("CommandBar", "&Merge Tag"), Menu::kInsert, "MergeMenu"},
    {Menu::kFormat, QT_TRANSLATE_NOOP("CommandBar", "F&ormat"), Menu::kFormat},
    {Menu::kParagraphStyle, QT_TRANSLATE_NOOP("CommandBar", "Paragraph St&yle"), Menu::kFormat, "StyleMenu"},
    {Menu::kRowsAndColumns, QT_TRANSLATE_NOOP("CommandBar", "Ro&ws and Columns"), Menu::kFormat, "TableMenu"},
    {Menu::kMessage, QT_TRANSLATE_NOOP("CommandBar", "&Message"), Menu::kMessage},
    {Menu::kTools, QT_TRANSLATE_NOOP("CommandBar", "Too&ls"), Menu::kTools},
    {Menu::kHelp, QT_TRANSLATE_NOOP("CommandBar", "&Help"), Menu::kHelp},
});

// The buttons of the toolbar, in its order: what has a key everywhere comes last, where a small window cuts.
struct Button {
  CommandId id;
  bool behind_line = false;
};
constexpr auto kButtons = std::to_array<Button>({
    {kOpen},      {kSave},       {kPrint},           {kUndo, true}, {kRedo},       {kBold, true},    {kItalic},
    {kUnderline}, {kTextColour}, {kAlignLeft, true}, {kCentre},     {kAlignRight}, {kBullets, true}, {kNumbers},
    {kOutdent},   {kIndent},     {kPicture, true},   {kHyperlink},  {kTable},      {kFind, true},    {kCut, true},
    {kCopy},      {kPaste},      {kDelete},          {kProperties},
});

// The styles of a paragraph, of which one always holds.
constexpr auto kStyles = std::to_array<CommandId>({kNormal, kHeading1, kHeading2, kHeading3, kQuote, kPreformatted});

QString TipOf(const Command& command) {
  if (command.keys.empty()) return NameOf(command);
  const QKeySequence keys(ToQt(command.keys));
  return QString("%1 (%2)").arg(NameOf(command), keys.toString(QKeySequence::NativeText));
}

// The tag that a command of the merge menu inserts.
QString TagOf(const Command& command) {
  const auto* const field =
      std::find_if(document::kMergeFields.begin(), document::kMergeFields.end(),
                   [&command](const document::MergeField& row) { return row.command == command.name; });
  return field == document::kMergeFields.end() ? QString() : ToQt(field->tag);
}

}  // namespace

CommandBar::CommandBar(QMainWindow* window) : QObject(window), window_(window) {
  toolbar_ = window->addToolBar(tr("Formatting"));
  toolbar_->setObjectName("Toolbar");
  toolbar_->setMovable(false);
  toolbar_->setIconSize(QSize(18, 18));
  MakeMenus();
  MakeToolbar();
  QCoreApplication::instance()->installEventFilter(this);
}

// What has the focus is asked first whether it wants a key for itself. The page and the text boxes want several that
// this window's menus show, for editing habits of other systems: there the menus have the word.
bool CommandBar::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::ShortcutOverride) return false;
  const auto* const widget = qobject_cast<QWidget*>(watched);
  if (widget == nullptr || widget->window() != window_) return false;
  const QKeySequence keys(static_cast<QKeyEvent*>(event)->keyCombination());
  const bool is_ours = std::any_of(actions_.begin(), actions_.end(), [&keys](const QAction* action) {
    return action->isEnabled() && action->shortcutContext() == Qt::WindowShortcut && action->shortcut() == keys;
  });
  if (is_ours) event->ignore();
  return is_ours;
}

QAction* CommandBar::Make(const Command& command) {
  auto* action = new QAction(Icon(command.icon), LabelOf(command), window_);
  action->setObjectName(ToQt(command.name));
  action->setShortcut(QKeySequence(ToQt(command.keys)));
  action->setAutoRepeat(command.place.menu == Menu::kEdit);  // held, a key undoes more, and opens one window
  action->setCheckable(command.checked != nullptr || command.id == kSource || command.id == kSplash);
  action->setToolTip(command.place.menu == Menu::kMergeTag ? TagOf(command) : TipOf(command));
  connect(action, &QAction::triggered, this, [this, id = command.id] { emit Triggered(id); });
  actions_.insert(command.id, action);
  return action;
}

QMenu* CommandBar::MenuOf(Menu menu) {
  if (QMenu* made = menus_.value(menu)) return made;
  const auto* const row =
      std::find_if(kMenus.begin(), kMenus.end(), [menu](const MenuRow& candidate) { return candidate.menu == menu; });
  const QString title = QCoreApplication::translate("CommandBar", row->title);
  QMenu* made = row->inside == menu ? window_->menuBar()->addMenu(title) : MenuOf(row->inside)->addMenu(title);
  made->setObjectName(row->name);
  menus_.insert(menu, made);
  return made;
}

void CommandBar::MakeMenus() {
  for (const Command& command : Commands()) {
    QMenu* menu = MenuOf(command.place.menu);
    if (command.place.under_line) menu->addSeparator();
    menu->addAction(Make(command));
  }
  // The key that deletes works where the focus is; here it is only shown.
  ActionOf(kDelete)->setShortcutContext(Qt::WidgetShortcut);
  MenuOf(Menu::kMergeTag)->setToolTipsVisible(true);
  MenuOf(Menu::kRowsAndColumns)->setEnabled(false);  // until the caret is in a table
}

void CommandBar::MakeToolbar() {
  for (const Button& button : kButtons) {
    if (button.id == kBold) {
      AddStyleBox();
      AddFontBoxes();
    }
    if (button.id == kCut) AddMergeButton();
    if (button.behind_line) toolbar_->addSeparator();
    QAction* action = ActionOf(button.id);
    toolbar_->addAction(action);
    toolbar_->widgetForAction(action)->setObjectName(action->objectName());
  }
}

void CommandBar::AddStyleBox() {
  toolbar_->addSeparator();
  styles_ = new QComboBox(toolbar_);
  styles_->setObjectName("StyleComboBox");
  styles_->setAccessibleName(tr("Paragraph style"));
  styles_->setToolTip(tr("Paragraph style"));
  styles_->setFocusPolicy(Qt::ClickFocus);
  styles_->setMaximumWidth(100);
  for (const CommandId id : kStyles) styles_->addItem(NameOf(RowOf(id)));
  toolbar_->addWidget(styles_);
  connect(styles_, &QComboBox::activated, this,
          [this](int index) { emit Triggered(kStyles.at(static_cast<std::size_t>(index))); });
}

void CommandBar::AddMenuBehind(CommandId id, QMenu* menu) {
  QMenu* around = MenuOf(RowOf(id).place.menu);
  const auto entries = around->actions();
  const auto at = entries.indexOf(ActionOf(id)) + 1;
  around->insertMenu(at < entries.size() ? entries.at(at) : nullptr, menu);
}

void CommandBar::AddFontBoxes() {
  fonts_ = new QFontComboBox(toolbar_);
  fonts_->setObjectName("FontNameComboBox");
  fonts_->setAccessibleName(tr("Font"));
  fonts_->setToolTip(tr("Font"));
  fonts_->setMaximumWidth(100);
  fonts_->setFocusPolicy(Qt::ClickFocus);
  sizes_ = new QComboBox(toolbar_);
  sizes_->setObjectName("FontSizeComboBox");
  sizes_->setAccessibleName(tr("Font size"));
  sizes_->setToolTip(tr("Font size"));
  sizes_->setFocusPolicy(Qt::ClickFocus);
  for (int size = 1; size <= 7; ++size) sizes_->addItem(QString::number(size), size);
  toolbar_->addWidget(fonts_);
  toolbar_->addWidget(sizes_);
  connect(fonts_, &QComboBox::textActivated, this, &CommandBar::FontChosen);
  connect(sizes_, &QComboBox::activated, this, [this](int index) { emit SizeChosen(index + 1); });
}

void CommandBar::AddMergeButton() {
  auto* merge = new QToolButton(toolbar_);
  merge->setObjectName("MergeTagButton");
  merge->setText(tr("Merge tag") + u8" \u25be");
  merge->setStyleSheet("QToolButton::menu-indicator { image: none; }");  // the style's own lies beside the text
  merge->setIcon(Icon("merge"));
  merge->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  merge->setPopupMode(QToolButton::InstantPopup);
  merge->setToolTip(tr("Insert what is different for each recipient"));
  merge->setMenu(MenuOf(Menu::kMergeTag));
  toolbar_->addWidget(merge);
}

void CommandBar::Show(const EditorState& state) {
  for (const Command& command : Commands()) {
    if (command.checked != nullptr) ActionOf(command.id)->setChecked(state.*command.checked);
  }
  ActionOf(kUndo)->setEnabled(state.can_undo);
  ActionOf(kRedo)->setEnabled(state.can_redo);
  ActionOf(kRemoveHyperlink)->setEnabled(!state.link.isEmpty() || !state.selected.isEmpty());
  MenuOf(Menu::kRowsAndColumns)->setEnabled(state.in_table);
  const auto* const style =
      std::find_if(kStyles.begin(), kStyles.end(), [&state](CommandId id) { return state.*RowOf(id).checked; });
  styles_->setCurrentIndex(style == kStyles.end() ? -1 : static_cast<int>(style - kStyles.begin()));
  if (!state.font.isEmpty() && !fonts_->hasFocus()) {
    const QSignalBlocker quiet(fonts_);
    fonts_->setEditText(state.font);
  }
  const QSignalBlocker quiet(sizes_);
  sizes_->setCurrentIndex(state.size - 1);
}

void CommandBar::ShowSplash(bool wanted) { ActionOf(kSplash)->setChecked(wanted); }

void CommandBar::ShowSource(bool shown) {
  ActionOf(kSource)->setChecked(shown);
  toolbar_->setEnabled(!shown);
}

}  // namespace quillcast::desktop

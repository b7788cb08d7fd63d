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

// A row of the menus: identifier 0 and no text for a line between, a text alone for a menu's title.
struct Row {
  int identifier;
  const char* text;
  const char* icon = "";
  const char* keys = "";
};

// The commands as the menus show them. The toolbar's button for the same command has the second identifier.
constexpr auto kRows = std::to_array<Row>({
    {0, QT_TRANSLATE_NOOP("CommandBar", "&File")},
    {1, QT_TRANSLATE_NOOP("CommandBar", "&Open…"), "open", "Ctrl+O"},
    {2, QT_TRANSLATE_NOOP("CommandBar", "&Save"), "save", "Ctrl+S"},
    {4, QT_TRANSLATE_NOOP("CommandBar", "&Print…"), "print", "Ctrl+P"},
    {5, QT_TRANSLATE_NOOP("CommandBar", "P&roperties…")},
    {0, nullptr},
    {6, QT_TRANSLATE_NOOP("CommandBar", "E&xit"), "", "Ctrl+Q"},
    {0, QT_TRANSLATE_NOOP("CommandBar", "&Edit")},
    {7, QT_TRANSLATE_NOOP("CommandBar", "&Undo"), "undo", "Ctrl+Z"},
    {8, QT_TRANSLATE_NOOP("CommandBar", "&Redo"), "redo", "Ctrl+Shift+Z"},
    {0, nullptr},
    {9, QT_TRANSLATE_NOOP("CommandBar", "Cu&t"), "cut", "Ctrl+X"},
    {10, QT_TRANSLATE_NOOP("CommandBar", "&Copy"), "copy", "Ctrl+C"},
    {11, QT_TRANSLATE_NOOP("CommandBar", "&Paste"), "paste", "Ctrl+V"},
    {12, QT_TRANSLATE_NOOP("CommandBar", "&Delete"), "", "Del"},
    {13, QT_TRANSLATE_NOOP("CommandBar", "Select &All"), "", "Ctrl+A"},
    {0, nullptr},
    {14, QT_TRANSLATE_NOOP("CommandBar", "&Find…"), "find", "Ctrl+F"},
    {0, QT_TRANSLATE_NOOP("CommandBar", "&Insert")},
    {15, QT_TRANSLATE_NOOP("CommandBar", "&Date and Time…")},
    {16, QT_TRANSLATE_NOOP("CommandBar", "Te&mplate…")},
    {17, QT_TRANSLATE_NOOP("CommandBar", "&Attachment…"), "attach", "Ctrl+Shift+A"},
    {18, QT_TRANSLATE_NOOP("CommandBar", "&Remove Attachment"), "remove"},
    {0, nullptr},
    {23, QT_TRANSLATE_NOOP("CommandBar", "&Picture…"), "picture", "Ctrl+Shift+P"},
    {24, QT_TRANSLATE_NOOP("CommandBar", "&Hyperlink…"), "link", "Ctrl+K"},
    {21, QT_TRANSLATE_NOOP("CommandBar", "Horizontal &Line…")},
    {22, QT_TRANSLATE_NOOP("CommandBar", "&Table…"), "table"},
    {0, QT_TRANSLATE_NOOP("CommandBar", "F&ormat")},
    {19, QT_TRANSLATE_NOOP("CommandBar", "&Font…")},
    {20, QT_TRANSLATE_NOOP("CommandBar", "&Page Colours…")},
    {0, nullptr},
    {27, QT_TRANSLATE_NOOP("CommandBar", "&Bold"), "bold", "Ctrl+B"},
    {28, QT_TRANSLATE_NOOP("CommandBar", "&Italic"), "italic", "Ctrl+I"},
    {29, QT_TRANSLATE_NOOP("CommandBar", "&Underline"), "underline", "Ctrl+U"},
    {0, nullptr},
    {30, QT_TRANSLATE_NOOP("CommandBar", "Align &Left"), "left", "Ctrl+L"},
    {31, QT_TRANSLATE_NOOP("CommandBar", "&Centre"), "center", "Ctrl+E"},
    {32, QT_TRANSLATE_NOOP("CommandBar", "Align &Right"), "right", "Ctrl+R"},
    {33, QT_TRANSLATE_NOOP("CommandBar", "I&ndent"), "indent", "Ctrl+]"},
    {34, QT_TRANSLATE_NOOP("CommandBar", "&Outdent"), "outdent", "Ctrl+["},
    {0, nullptr},
    {35, QT_TRANSLATE_NOOP("CommandBar", "Bulleted Li&st"), "bullets", "Ctrl+Shift+8"},
    {36, QT_TRANSLATE_NOOP("CommandBar", "Nu&mbered List"), "numbers", "Ctrl+Shift+7"},
    {0, nullptr},
    {25, QT_TRANSLATE_NOOP("CommandBar", "Remove &Hyperlink")},
    {26, QT_TRANSLATE_NOOP("CommandBar", "Remove Forma&tting"), "", "Ctrl+Space"},
    {0, QT_TRANSLATE_NOOP("CommandBar", "&Message")},
    {37, QT_TRANSLATE_NOOP("CommandBar", "Preview in the &Mail Program"), "", "Shift+F5"},
    {38, QT_TRANSLATE_NOOP("CommandBar", "&Send…"), "send", "Ctrl+Return"},
    {0, nullptr},
    {41, QT_TRANSLATE_NOOP("CommandBar", "&History…"), "history", "Ctrl+H"},
    {0, QT_TRANSLATE_NOOP("CommandBar", "Too&ls")},
    {39, QT_TRANSLATE_NOOP("CommandBar", "Mail &Account…"), "account"},
    {40, QT_TRANSLATE_NOOP("CommandBar", "&Groups…"), "groups"},
    {42, QT_TRANSLATE_NOOP("CommandBar", "&Signature…")},
    {43, QT_TRANSLATE_NOOP("CommandBar", "&Import Recipients…")},
    {44, QT_TRANSLATE_NOOP("CommandBar", "&Export Recipients…")},
    {52, QT_TRANSLATE_NOOP("CommandBar", "&Thread Options…")},
    {53, QT_TRANSLATE_NOOP("CommandBar", "&Domain Tools…")},
    {54, QT_TRANSLATE_NOOP("CommandBar", "&Print Messages…")},
    {55, QT_TRANSLATE_NOOP("CommandBar", "Import Messa&ge…")},
    {56, QT_TRANSLATE_NOOP("CommandBar", "Export &Message…")},
    {57, QT_TRANSLATE_NOOP("CommandBar", "E&xtract from Messages…")},
    {58, QT_TRANSLATE_NOOP("CommandBar", "Test a Ser&ver…")},
    {0, QT_TRANSLATE_NOOP("CommandBar", "&Help")},
    {59, QT_TRANSLATE_NOOP("CommandBar", "&Help"), "", "F1"},
    {60, QT_TRANSLATE_NOOP("CommandBar", "T&utorial")},
    {61, QT_TRANSLATE_NOOP("CommandBar", "&Tip of the Day")},
    {63, QT_TRANSLATE_NOOP("CommandBar", "&Support…")},
    {64, QT_TRANSLATE_NOOP("CommandBar", "Check for &Updates…")},
    {65, QT_TRANSLATE_NOOP("CommandBar", "Home &Page")},
    {66, QT_TRANSLATE_NOOP("CommandBar", "&About")},
});

// The toolbar: the buttons' own identifiers, 0 for a line between.
constexpr auto kButtons = std::to_array<int>(
    {83, 84, 85, 0, 87, 88, 0, 94, 95, 96, 0, 97, 98, 99, 0, 102, 103, 100, 101, 0, 23, 24, 22, 0, 93});

// The commands whose buttons show a state.
constexpr auto kStates = std::to_array<std::pair<int, bool EditorState::*>>({
    {27, &EditorState::bold},
    {94, &EditorState::bold},
    {28, &EditorState::italic},
    {95, &EditorState::italic},
    {29, &EditorState::underline},
    {96, &EditorState::underline},
    {30, &EditorState::left},
    {97, &EditorState::left},
    {31, &EditorState::center},
    {98, &EditorState::center},
    {32, &EditorState::right},
    {99, &EditorState::right},
    {35, &EditorState::bullets},
    {102, &EditorState::bullets},
    {36, &EditorState::numbers},
    {103, &EditorState::numbers},
});

bool HasState(int identifier) {
  return std::any_of(kStates.begin(), kStates.end(), [&](const auto& row) { return row.first == identifier; });
}

// The menu's row for what a toolbar button does.
const Row* RowFor(int button) {
  const auto wanted = FindCommand(button);
  const auto* const row = std::find_if(kRows.begin(), kRows.end(), [&](const Row& candidate) {
    const auto command = FindCommand(candidate.identifier);
    return command && wanted && command->action == wanted->action && command->editor_code == wanted->editor_code;
  });
  return row == kRows.end() ? nullptr : row;
}

QString Translated(const char* text) { return QCoreApplication::translate("CommandBar", text); }

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

bool CommandBar::IsOffered(Action action) {
  switch (action) {
    case Action::kProperties:
    case Action::kDateTime:
    case Action::kTemplate:
    case Action::kBody:
    case Action::kLine:
    case Action::kSignature:
    case Action::kExport:
    case Action::kDomainTools:
    case Action::kExtraForm1:
    case Action::kExtraForm2:
    case Action::kExtraForm3:
    case Action::kExtraForm4:
    case Action::kExtraForm5:
    case Action::kTutorial:
    case Action::kSupport:
    case Action::kUpdate:
    case Action::kHomePage:
      return false;
    default:
      return true;
  }
}

std::string_view CommandBar::LabelOf(int identifier) {
  const auto* const row = std::find_if(kRows.begin(), kRows.end(),
                                       [&](const Row& candidate) { return candidate.identifier == identifier; });
  return identifier == 0 || row == kRows.end() ? "" : row->text;
}

// What has the focus is asked first whether it wants a key for itself. The page and the text boxes want several that
// this window's menus show, for editing habits of other systems: there the menus have the word.
bool CommandBar::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::ShortcutOverride) return false;
  const auto* const widget = qobject_cast<QWidget*>(watched);
  if (widget == nullptr || widget->window() != window_) return false;
  const QKeySequence keys(static_cast<QKeyEvent*>(event)->keyCombination());
  const auto actions = window_->findChildren<QAction*>();
  const bool is_ours = std::any_of(actions.begin(), actions.end(), [&keys](const QAction* action) {
    return action->isEnabled() && action->shortcutContext() == Qt::WindowShortcut && action->shortcut() == keys;
  });
  if (is_ours) event->ignore();
  return is_ours;
}

QAction* CommandBar::Make(int identifier, const QString& text, const char* icon) {
  auto* action = new QAction(Icon(icon), text, window_);
  action->setObjectName(QString("Command%1").arg(identifier));
  action->setCheckable(HasState(identifier));
  connect(action, &QAction::triggered, this, [this, identifier] { emit Triggered(identifier); });
  actions_.insert(identifier, action);
  return action;
}

QAction* CommandBar::AddOwn(QMenu* menu, OwnCommand command, const QString& text, const char* icon,
                            const QKeySequence& keys) {
  auto* action = menu->addAction(Icon(icon), text, this, [this, command] { emit OwnTriggered(command); });
  action->setShortcut(keys);
  return action;
}

void CommandBar::MakeMenus() {
  QMenu* menu = nullptr;
  for (const Row& row : kRows) {
    if (row.identifier == 0) {
      if (row.text == nullptr) {
        menu->addSeparator();
      } else {
        menu = window_->menuBar()->addMenu(Translated(row.text));
        if (menu->title() == "&File") AddOwn(menu, OwnCommand::kNew, tr("&New"), "", QKeySequence("Ctrl+N"));
      }
      continue;
    }
    if (!IsOffered(FindCommand(row.identifier)->action)) continue;
    QAction* action = Make(row.identifier, Translated(row.text), row.icon);
    action->setShortcut(QKeySequence(row.keys));
    // The key that deletes works where the focus is; here it is only shown.
    if (row.identifier == 12) action->setShortcutContext(Qt::WidgetShortcut);
    menu->addAction(action);
    if (row.identifier == 2) AddOwn(menu, OwnCommand::kSaveAs, tr("Save &As…"), "", QKeySequence("Ctrl+Shift+S"));
    if (row.identifier == 14)
      source_ = AddOwn(menu, OwnCommand::kSource, tr("HTML &Source"), "source", QKeySequence("Ctrl+Shift+U"));
    if (row.identifier == 18) MakeMergeMenu();
    if (row.identifier == 18) menu->addMenu(merge_menu_);
    if (row.identifier == 26) MakeTableMenu(menu);
    if (row.identifier == 11)
      AddOwn(menu, OwnCommand::kPastePlain, tr("Paste &without Formatting"), "", QKeySequence("Ctrl+Shift+V"));
    if (row.identifier == 19) colour_ = AddOwn(menu, OwnCommand::kColour, tr("Te&xt Colour…"), "colour", {});
    if (row.identifier == 52) splash_ = AddOwn(menu, OwnCommand::kSplash, tr("Splash at &Start"), "", {});
    if (row.identifier == 37) AddOwn(menu, OwnCommand::kPreview, tr("&Preview…"), "preview", QKeySequence("F5"));
  }
  source_->setCheckable(true);
  splash_->setCheckable(true);
}

void CommandBar::MakeMergeMenu() {
  merge_menu_ = new QMenu(tr("&Merge Tag"), window_);
  merge_menu_->setObjectName("MergeMenu");
  for (std::size_t i = 0; i < document::kMergeFields.size(); ++i) {
    const auto& field = document::kMergeFields[i];
    const auto commands = Commands();
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const Command& row) { return row.merge_field == field.command; });
    QAction* action = Make(command->identifier, Translated(recipients::kFields[i].label), "");
    action->setToolTip(ToQt(field.tag));
    merge_menu_->addAction(action);
  }
  merge_menu_->setToolTipsVisible(true);
}

// For the table that the caret is in.
void CommandBar::MakeTableMenu(QMenu* format) {
  table_menu_ = format->addMenu(tr("Ro&ws and Columns"));
  table_menu_->setObjectName("TableMenu");
  const auto add = [this](TableEdit edit, const QString& text) {
    table_menu_->addAction(text, this, [this, edit] { emit TableChanged(edit); });
  };
  add(TableEdit::kRowAbove, tr("Row &Above"));
  add(TableEdit::kRowBelow, tr("Row &Below"));
  add(TableEdit::kColumnLeft, tr("Column on the &Left"));
  add(TableEdit::kColumnRight, tr("Column on the &Right"));
  table_menu_->addSeparator();
  add(TableEdit::kDeleteRow, tr("&Delete Row"));
  add(TableEdit::kDeleteColumn, tr("Delete &Column"));
  add(TableEdit::kDeleteTable, tr("Delete &Table"));
  table_menu_->setEnabled(false);
}

void CommandBar::AddButton(int identifier) {
  const Row* row = RowFor(identifier);
  QAction* action = ActionOf(identifier);
  if (action == nullptr) action = Make(identifier, Translated(row->text), row->icon);
  const QString name = Translated(row->text).remove('&').remove("…");
  action->setToolTip(*row->keys == 0
                         ? name
                         : QString("%1 (%2)").arg(name, QKeySequence(row->keys).toString(QKeySequence::NativeText)));
  toolbar_->addAction(action);
}

void CommandBar::MakeToolbar() {
  int made = 0;
  for (const int identifier : kButtons) {
    if (identifier == 0) {
      toolbar_->addSeparator();
    } else {
      AddButton(identifier);
    }
    if (identifier == 96) toolbar_->addAction(colour_);
    if (++made != 7) continue;  // behind undo and redo
    fonts_ = new QFontComboBox(toolbar_);
    fonts_->setObjectName("FontNameComboBox");
    fonts_->setAccessibleName(tr("Font"));
    fonts_->setToolTip(tr("Font"));
    fonts_->setMaximumWidth(160);
    fonts_->setFocusPolicy(Qt::ClickFocus);
    sizes_ = new QComboBox(toolbar_);
    sizes_->setObjectName("FontSizeComboBox");
    sizes_->setAccessibleName(tr("Font size"));
    sizes_->setToolTip(tr("Font size"));
    sizes_->setFocusPolicy(Qt::ClickFocus);
    for (int size = 1; size <= 7; ++size) sizes_->addItem(QString::number(size), size);
    toolbar_->addWidget(fonts_);
    toolbar_->addWidget(sizes_);
    toolbar_->addSeparator();
    connect(fonts_, &QComboBox::textActivated, this, &CommandBar::FontChosen);
    connect(sizes_, &QComboBox::activated, this, [this](int index) { emit SizeChosen(index + 1); });
  }
  auto* merge = new QToolButton(toolbar_);
  merge->setObjectName("MergeTagButton");
  merge->setText(tr("Merge tag") + u8" \u25be");
  merge->setStyleSheet("QToolButton::menu-indicator { image: none; }");  // the style's own lies beside the text
  merge->setIcon(Icon("merge"));
  merge->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  merge->setPopupMode(QToolButton::InstantPopup);
  merge->setToolTip(tr("Insert what is different for each recipient"));
  merge->setMenu(merge_menu_);
  toolbar_->addWidget(merge);
}

void CommandBar::Show(const EditorState& state) {
  for (const auto& [identifier, member] : kStates) {
    if (QAction* action = ActionOf(identifier)) action->setChecked(state.*member);
  }
  for (const int undo : {7, 87}) ActionOf(undo)->setEnabled(state.can_undo);
  for (const int redo : {8, 88}) ActionOf(redo)->setEnabled(state.can_redo);
  table_menu_->setEnabled(state.in_table);
  ActionOf(25)->setEnabled(!state.link.isEmpty() || !state.selected.isEmpty());
  if (!state.font.isEmpty() && !fonts_->hasFocus()) {
    const QSignalBlocker quiet(fonts_);
    fonts_->setEditText(state.font);
  }
  const QSignalBlocker quiet(sizes_);
  sizes_->setCurrentIndex(state.size - 1);
}

void CommandBar::ShowSplash(bool wanted) { splash_->setChecked(wanted); }

void CommandBar::ShowSource(bool shown) {
  source_->setChecked(shown);
  toolbar_->setEnabled(!shown);
}

}  // namespace quillcast::desktop

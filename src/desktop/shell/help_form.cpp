#include "desktop/shell/help_form.h"

#include <QHash>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTextBrowser>
#include <QUrl>
#include <algorithm>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"

namespace quillcast::desktop {

HelpForm::HelpForm(const profile::Folders& folders, const QString& topic, QWidget* parent)
    : QDialog(parent),
      folder_(PathToQt(folders.program / "help")),
      search_(new QLineEdit(this)),
      contents_(new RowList(
          "ContentsList", tr("Pages"), {{QString()}}, [this](std::size_t row, int) { return CellText(row); }, this)),
      page_(new QTextBrowser(this)) {
  BuildWindow();
  LoadPages();
  connect(search_, &QLineEdit::textChanged, this, &HelpForm::List);
  connect(search_, &QLineEdit::returnPressed, this, [this] {
    if (!listed_.empty()) contents_->Choose(0);
  });
  connect(contents_, &RowList::ChosenChanged, this, &HelpForm::OpenChosen);
  connect(page_, &QTextBrowser::sourceChanged, this, &HelpForm::Follow);
  Open(topic);
  page_->setFocus();
}

void HelpForm::BuildWindow() {
  setObjectName("HelpForm");
  setWindowTitle(tr("Help"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(880, 600);
  contents_->SetLongText(LongText::kWrapped);
  contents_->SetEmptyText(tr("No page has all of these words. Take fewer, or others."));
  page_->setObjectName("HelpPage");
  page_->setAccessibleName(tr("Help page"));
  page_->setOpenExternalLinks(false);
  page_->setSearchPaths({folder_});
  auto* column = new FormColumn(this);
  search_->setPlaceholderText(tr("words to look for in all pages"));
  column->AddGrid()->Add("HelpSearchTextBox", tr("&Search:"), search_);
  auto* halves = new QSplitter(this);
  for (QWidget* half : {static_cast<QWidget*>(contents_), static_cast<QWidget*>(page_)}) halves->addWidget(half);
  column->Add(halves, 1);
  halves->setChildrenCollapsible(false);
  halves->setSizes({250, 630});
  auto* buttons = column->AddButtons(QDialogButtonBox::Close);
  const auto add = [&](const char* name, const QString& text, auto act, bool is_there) {
    auto* button = buttons->addButton(text, QDialogButtonBox::ActionRole);
    button->setObjectName(name);
    button->setAutoDefault(false);
    button->setEnabled(is_there);
    connect(button, &QPushButton::clicked, page_, act);
    return button;
  };
  auto* back = add(
      "BackButton", tr("&Back"), [this] { page_->backward(); }, false);
  auto* forward = add(
      "ForwardButton", tr("&Forward"), [this] { page_->forward(); }, false);
  add(
      "WelcomeButton", tr("Ho&me"), [this] { Open(kWelcomeTopic); }, true);
  connect(page_, &QTextBrowser::backwardAvailable, back, &QPushButton::setEnabled);
  connect(page_, &QTextBrowser::forwardAvailable, forward, &QPushButton::setEnabled);
  buttons->button(QDialogButtonBox::Close)->setAutoDefault(false);  // Return in the search opens what was found
}

void HelpForm::LoadPages() {
  auto pages = help::LoadPages(PathFromQt(folder_));
  if (pages) {
    pages_ = *std::move(pages);
  } else {
    contents_->SetEmptyText(InWords(pages.error()));
  }
  List();
}

void HelpForm::Open(const QString& topic) {
  const QString name = topic.section('#', 0, 0);
  const bool is_there =
      std::any_of(pages_.begin(), pages_.end(), [&name](const help::Page& page) { return ToQt(page.topic) == name; });
  if (is_there) {
    QUrl page = QUrl::fromLocalFile(folder_ + '/' + name);
    if (name != topic) page.setFragment(topic.section('#', 1));
    page_->setSource(page);
  } else {
    page_->setPlainText(tr("The help page %1 is not in %2. Install the program anew.").arg(name, folder_));
  }
}

// All pages, or those that hold what was typed.
void HelpForm::List() {
  const std::string words = FromQt(search_->text().trimmed());
  listed_ = help::Search(pages_, words);
  if (words.empty()) {
    for (const help::Page& page : pages_) listed_.push_back({&page, {}});
  }
  follows_ = true;
  contents_->Reset(listed_.size());
  follows_ = false;
  if (words.empty()) Follow(page_->source());  // what was found is seen from the best hit on
}

// A page that was searched for shows the first of the words.
void HelpForm::OpenChosen() {
  const auto chosen = contents_->Chosen();
  if (follows_ || chosen.empty()) return;
  Open(ToQt(listed_[chosen.front()].page->topic));
  const QString word = search_->text().trimmed().section(' ', 0, 0);
  if (!word.isEmpty()) page_->find(word);
}

// The contents show which page is open, whichever way led to it.
void HelpForm::Follow(const QUrl& source) {
  const std::string topic = FromQt(source.fileName());
  const auto row =
      std::find_if(listed_.begin(), listed_.end(), [&topic](const help::Hit& hit) { return hit.page->topic == topic; });
  if (row == listed_.end()) return;
  follows_ = true;
  contents_->Choose(static_cast<std::size_t>(row - listed_.begin()));
  follows_ = false;
}

QString HelpForm::CellText(std::size_t row) const {
  const help::Hit& hit = listed_[row];
  return ToQt(hit.excerpt.empty() ? hit.page->title : hit.page->title + ": " + hit.excerpt);
}

HelpForm* HelpOver(QWidget& window) { return window.findChild<HelpForm*>(QString(), Qt::FindDirectChildrenOnly); }

void BringToFront(HelpForm& help) {
  help.show();
  help.raise();
  help.activateWindow();
}

std::optional<QString> TopicOf(const QString& window) {
  static const QHash<QString, QString> topics = {
      {"MainForm", kWelcomeTopic},
      {"SendMailForm1", "Sending.htm"},
      {"RunPaceForm", "Sending.htm"},
      {"ShutDownForm", kWelcomeTopic},
      {"PreviewForm", "Sending.htm"},
      {"PracticeForm", "Message Files.htm"},
      {"MessageForm", "Message Files.htm"},
      {"SupportForm", "Contact Information.htm"},
      {"AboutForm", kWelcomeTopic},
      {"TipsForm", kWelcomeTopic},
      {"TutorialForm", "First Mailing.htm"},
      {"UpdateMainForm", "Updates.htm"},
      {"HelpForm", kWelcomeTopic},
      {"EmailManagerForm", "Email Manager 1.htm"},
      {"OutlookExpressForm", "Email Manager 4.htm"},
      {"ThreadForm", "Thread Options.htm"},
      {"TableForm", "Message Options.htm"},
      {"LinkForm", "Message Options.htm"},
      {"PictureForm", "Message Options.htm"},
      {"FontForm", "Message Options.htm"},
      {"LineForm", "Message Options.htm"},
      {"DateTimeForm", "Message Options.htm"},
      {"BodyForm", "Message Options.htm"},
      {"TemplateForm", "Message Options.htm"},
      {"TemplateNameForm", "Message Options.htm"},
      {"PropertiesForm", "Message Options.htm"},
      {"SignatureManagerForm", "Signature Manager.htm"},
      {"AttachmentsForm", "Message Options.htm"},
      {"GroupManagerForm", kGroupsTopic},
      {"DuplicatesForm", kGroupsTopic},
      {"WhereForm", kGroupsTopic},
      {"CapitalizeForm", kGroupsTopic},
      {"SortForm", kGroupsTopic},
      {"MergeForm", kGroupsTopic},
      {"GroupNewForm", kGroupsTopic},
      {"GroupRenameForm", kGroupsTopic},
      {"RecipientAddForm", kGroupsTopic},
      {"RecipientModifyForm1", kGroupsTopic},
      {"RecipientModifyForm2", kGroupsTopic},
      {"RecipientSearchForm", kGroupsTopic},
      {"RecipientMoveForm", kGroupsTopic},
      {"RecipientPrintForm", kGroupsTopic},
      {"RecipientImportForm", "Group Manager 2.htm"},
      {"MappingKeepForm", "Group Manager 2.htm"},
      {"RecipientExportForm", "Group Manager 3.htm"},
      {"ExtraForm4", "Extra Tools 5.htm"},
      {"HistoryManagerForm", "History Manager.htm"},
      {"KeptRunsForm", "History Manager.htm"},
      {"ExtraForm1", "Extra Tools 2.htm"},
      {"ExtraForm2", "Extra Tools 3.htm"},
      {"ExtraForm3", "Extra Tools 4.htm"},
      {"ExtraForm5", "Extra Tools 6.htm"},
      {"DomainToolsForm", "Extra Tools 1.htm"},
      {"DomainCheckForm", "Extra Tools 1.htm"},
      {"DomainIPForm", "Domain Tools.htm"},
      {"IPDomainForm", "Domain Tools.htm"},
      {"MXLookupForm", "Domain Tools.htm"},
  };
  const auto found = topics.constFind(window);
  return found == topics.cend() ? std::nullopt : std::optional(*found);
}

}  // namespace quillcast::desktop

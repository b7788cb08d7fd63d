#include "desktop/shell/help_form.h"

#include <QFile>
#include <QHash>
#include <QTextBrowser>
#include <QUrl>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"

namespace quillcast::desktop {

HelpForm::HelpForm(const profile::Folders& folders, const QString& topic, QWidget* parent) : QDialog(parent) {
  setObjectName("HelpForm");
  setWindowTitle(tr("Help"));
  setAttribute(Qt::WA_DeleteOnClose);
  resize(640, 520);
  auto* page = new QTextBrowser(this);
  page->setObjectName("HelpPage");
  page->setAccessibleName(tr("Help page"));
  page->setOpenExternalLinks(false);
  const QString folder = PathToQt(folders.program / "help");
  page->setSearchPaths({folder});
  if (QFile::exists(folder + '/' + topic)) {
    page->setSource(QUrl::fromLocalFile(folder + '/' + topic));
  } else {
    page->setPlainText(tr("The help page %1 is not in %2. Install the program anew.").arg(topic, folder));
  }
  auto* column = new FormColumn(this);
  column->Add(page, 1);
  column->AddButtons(QDialogButtonBox::Close);
}

std::optional<QString> TopicOf(const QString& window) {
  static const QHash<QString, QString> topics = {
      {"MainForm", kWelcomeTopic},
      {"SendMailForm1", kWelcomeTopic},
      {"ShutDownForm", kWelcomeTopic},
      {"PreviewForm", kWelcomeTopic},
      {"PracticeForm", "Message Files.htm"},
      {"MessageForm", "Message Files.htm"},
      {"SupportForm", "Contact Information.htm"},
      {"AboutForm", kWelcomeTopic},
      {"TipsForm", kWelcomeTopic},
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

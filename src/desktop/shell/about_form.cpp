#include "desktop/shell/about_form.h"

#include <QtWebEngineCore/qtwebenginecoreglobal.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/icons.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

// Those of the core, and what the window stands on besides.
std::vector<help::Library> AllLibraries() {
  auto libraries = help::Libraries();
  libraries.push_back({"Qt", qVersion(), "LGPL-3.0-only", ""});
  libraries.push_back({"Qt WebEngine", qWebEngineVersion(), "LGPL-3.0-only", ""});
  libraries.push_back({"Chromium", qWebEngineChromiumVersion(), "BSD-3-Clause", ""});
  return libraries;
}

}  // namespace

AboutForm::AboutForm(const profile::Folders& folders, const platform::Environment& environment, QWidget* parent)
    : QDialog(parent), facts_(help::SystemFacts(folders, environment)), libraries_(AllLibraries()) {
  BuildWindow();
}

void AboutForm::BuildWindow() {
  setObjectName("AboutForm");
  setWindowTitle(tr("About"));
  resize(620, 480);
  auto* system = new RowList(
      "SystemList", tr("This system"), {{tr("What"), 18}, {tr("Value")}},
      [this](std::size_t row, int column) {
        const help::Fact& fact = facts_[row];
        return column == 0 ? InWords(fact.what) : ToQt(fact.value);
      },
      this);
  system->SetLongText(LongText::kWrapped);
  system->Reset(facts_.size());
  auto* libraries = new RowList(
      "LibrariesList", tr("Libraries"), {{tr("Library"), 24}, {tr("Version"), 24}, {tr("Licence")}},
      [this](std::size_t row, int column) {
        const help::Library& library = libraries_[row];
        return ToQt(column == 0 ? library.name : column == 1 ? library.version : library.licence);
      },
      this);
  libraries->Reset(libraries_.size());
  auto* tabs = new QTabWidget(this);
  tabs->setObjectName("AboutTabs");
  tabs->addTab(system, tr("&System"));
  tabs->addTab(libraries, tr("&Libraries and Licences"));
  auto* column = new FormColumn(this);
  column->Add(MakeHeading());
  column->Add(tabs, 1);
  auto* status = column->Add(new StatusLine(this));
  auto* copy = column->AddButtons(QDialogButtonBox::Close)->addButton(tr("C&opy All"), QDialogButtonBox::ActionRole);
  copy->setObjectName("CopyButton");
  connect(copy, &QPushButton::clicked, this, [this, status] {
    Copy();
    status->Say(tr("Copied. There is no account in it, and nobody's address."));
  });
}

QWidget* AboutForm::MakeHeading() {
  auto* heading = new QWidget(this);
  auto* sign = new QLabel(heading);
  sign->setPixmap(ProgramIcon().pixmap(64, 64));
  auto* name = new QLabel(ToQt(help::NameWithVersion()), heading);
  QFont larger = name->font();
  larger.setPointSize(larger.pointSize() + 3);
  larger.setBold(true);
  name->setFont(larger);
  auto* what = new QLabel(tr("One personal e-mail to each of many people.\nLicence: %1").arg(help::kLicence), heading);
  auto* texts = new QVBoxLayout();
  texts->addWidget(name);
  texts->addWidget(what);
  auto* line = new QHBoxLayout(heading);
  line->setContentsMargins(0, 0, 0, 0);
  line->addWidget(sign);
  line->addLayout(texts, 1);
  return heading;
}

// In English, whatever the window speaks: it goes to whoever is asked.
void AboutForm::Copy() { QGuiApplication::clipboard()->setText(ToQt(help::AsText(facts_, libraries_))); }

}  // namespace quillcast::desktop

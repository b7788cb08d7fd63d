#include "desktop/document/template_form.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <array>

#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/own_templates_box.h"
#include "desktop/widgets/first_key.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/soon.h"
#include "desktop/widgets/status_line.h"
#include "document/body_source.h"
#include "document/picture_places.h"

namespace quillcast::desktop {
namespace {

constexpr int kPause = 60;  // milliseconds after the last letter
constexpr int kChoicesWidth = 400;
constexpr int kPreviewWidth = 180;  // at least
constexpr int kBoxWidth = 200;      // at least

// Of what is chosen, as it was when the work began.
struct Letter {
  document::DesignChoice choice;
  QString own;  // empty for a design
};

BackgroundTask::Work Reading(const Letter& letter, const document::OwnTemplates& templates,
                             const std::filesystem::path& program_folder,
                             const std::function<void(const Result<std::string>&)>& take) {
  return [letter, templates, program_folder, take](const platform::CancelToken&) -> std::function<void()> {
    return [take, html = letter.own.isEmpty() ? document::LetterFrom(letter.choice, program_folder)
                                              : templates.Read(FromQt(letter.own))] { take(html); };
  };
}

std::string TypedOr(const QLineEdit& box, std::string_view example) {
  return box.text().isEmpty() ? std::string(example) : FromQt(box.text());
}

}  // namespace

TemplateForm::TemplateForm(const profile::Program& program, EditorDocument& document, HtmlEditor& editor,
                           QWidget* parent)
    : QDialog(parent),
      program_(program),
      document_(document),
      preview_(new HtmlEditor(this)),
      stack_(new QStackedWidget(this)),
      designs_(new QListWidget(this)),
      own_(new OwnTemplatesBox(
          program,
          [&document, &editor]() -> Result<document::LetterToKeep> {
            const auto text = editor.Text();
            if (!text) return text.error();
            const auto base = document.BaseFolder();
            return document::LetterToKeep{FromQt(*text), base, document.picture_places().WithOwnFolder(base)};
          },
          this)),
      notes_(new StatusLine(this, "NotesLabel")),
      status_(new StatusLine(this)),
      pause_(new QTimer(this)) {
  setObjectName("TemplateForm");
  setWindowTitle(tr("Template"));
  BuildWindow();
  ConnectControls();
  Soon(preview_, [this] { preview_->SetHtml({}); });  // the engine takes longer than the window
}

// A box that loses the keys as it goes would still be judged.
TemplateForm::~TemplateForm() { hide(); }

void TemplateForm::BuildWindow() {
  for (const std::string_view design : document::kDesigns) designs_->addItem(ToQt(design));
  designs_->setObjectName("EmailListBox");
  designs_->setAccessibleName(tr("Designs"));
  designs_->setFixedHeight(designs_->sizeHintForRow(0) * designs_->count() + 2 * designs_->frameWidth() + 2);
  designs_->setCurrentRow(0, QItemSelectionModel::NoUpdate);
  new FirstKey(designs_);
  preview_->setObjectName("TemplatePreview");
  preview_->SetReadOnly(true);
  preview_->SetPicturePlaces(document::PicturePlaces(program_.folders));
  auto* nothing = new QLabel(tr("The template that you choose is shown here."), this);
  nothing->setAlignment(Qt::AlignCenter);
  nothing->setWordWrap(true);
  stack_->addWidget(nothing);
  stack_->addWidget(preview_);
  stack_->setMinimumWidth(kPreviewWidth);
  stack_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  auto* column = new FormColumn(this);
  column->AddLine({MakeChoices(), stack_}, 1);
  column->Add(notes_);
  column->Add(status_);
  ok_ = column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel)->button(QDialogButtonBox::Ok);
  notes_->hide();
  designs_->setFocus();
  resize(1010, 690);
}

QWidget* TemplateForm::MakeChoices() {
  auto* choices = new QWidget(this);
  choices->setMaximumWidth(kChoicesWidth);
  auto* column = new QVBoxLayout(choices);
  column->setContentsMargins(0, 0, 0, 0);
  auto* box = new QGroupBox(tr("Designs"), choices);
  auto* rows = new QVBoxLayout(box);
  LetFollow(designs_);
  rows->addWidget(designs_);
  auto* grid = new FormGrid(box);
  rows->addWidget(grid);
  company_ = grid->Add("CompanyTextBox", tr("&Company:"), new QLineEdit());
  web_site_ = grid->Add("WebSiteTextBox", tr("&Web site:"), new QLineEdit());
  address_ = grid->Add("EmailTextBox", tr("Unsubscribe &e-mail:"), new QLineEdit());
  subject_ = grid->Add("SubjectTextBox", tr("Unsubscribe &subject:"), new QLineEdit());
  for (QLineEdit* typed : {company_, web_site_, address_, subject_}) typed->setMinimumWidth(kBoxWidth);
  web_site_->setPlaceholderText(tr("www.example.org"));
  column->addWidget(box);
  LetFollow(own_);
  column->addWidget(own_, 1);
  return choices;
}

// What is chosen in one list is chosen in the other no more.
void TemplateForm::ConnectControls() {
  pause_->setSingleShot(true);
  pause_->setInterval(kPause);
  connect(pause_, &QTimer::timeout, this, [this] {
    ShowPreview();
    DropNotes();
  });
  connect(designs_, &QListWidget::itemSelectionChanged, this, [this] {
    if (!designs_->selectedItems().isEmpty()) own_->ChooseNone();
    ShowChoice();
  });
  connect(own_, &OwnTemplatesBox::ChosenChanged, this, [this] {
    const QSignalBlocker quiet(designs_);
    if (!own_->Chosen().isEmpty()) designs_->clearSelection();
    ShowChoice();
  });
  connect(own_, &OwnTemplatesBox::Said, this, [this](const QString& sentence) { status_->Say(sentence); });
  connect(own_, &OwnTemplatesBox::Failed, this, [this](const Error& error) { status_->Fail(error); });
  for (QLineEdit* box : {company_, web_site_, address_, subject_}) {
    connect(box, &QLineEdit::textChanged, pause_, qOverload<>(&QTimer::start));
    connect(box, &QLineEdit::editingFinished, this, &TemplateForm::ShowNotes);
  }
  own_->Refresh();
}

document::DesignChoice TemplateForm::Choice() const {
  const auto chosen = designs_->selectedItems();
  return {.design = chosen.isEmpty() ? std::string() : FromQt(chosen.front()->text()),
          .company = FromQt(company_->text()),
          .web_site = FromQt(web_site_->text()),
          .unsubscribe_address = FromQt(address_->text()),
          .unsubscribe_subject = FromQt(subject_->text())};
}

// No template of the person's has the name of a design.
QString TemplateForm::Name() const { return own_->Chosen().isEmpty() ? ToQt(Choice().design) : own_->Chosen(); }

document::DesignChoice TemplateForm::ChoiceToShow() const {
  return {.design = Choice().design,
          .company = TypedOr(*company_, document::kSampleCompany),
          .web_site = TypedOr(*web_site_, document::kSampleWebSite),
          .unsubscribe_address = TypedOr(*address_, document::kSampleMailbox),
          .unsubscribe_subject = TypedOr(*subject_, document::kSampleSubject)};
}

// What was told of the choice before is over.
void TemplateForm::ShowChoice() {
  status_->Say({});
  own_->SetChoosesNew(designs_->selectedItems().isEmpty());
  ShowPreview();
  ShowNotes();
}

QStringList TemplateForm::Notes() const {
  const auto choice = ChoiceToShow();
  return choice.design.empty() ? QStringList() : InWords(document::DesignNotes(choice, program_.folders.program));
}

void TemplateForm::ShowNotes() {
  told_ = Notes();
  notes_->Say(told_.join('\n'), NoteKind::kWarning);
  notes_->setVisible(!told_.isEmpty());
}

// What is being typed is not judged before it is done; what it mended is told no more.
void TemplateForm::DropNotes() {
  const QStringList now = Notes();
  told_.removeIf([&now](const QString& line) { return !now.contains(line); });
  notes_->Say(told_.join('\n'), NoteKind::kWarning);
  notes_->setVisible(!told_.isEmpty());
}

void TemplateForm::ShowPreview() {
  if (!ok_->isEnabled()) return;  // the template is on its way into the message
  const Letter letter{ChoiceToShow(), own_->Chosen()};
  const QString name = Name();
  if (name.isEmpty()) {
    stack_->setCurrentIndex(0);
    return;
  }
  task_.Start(Reading(letter, own_->templates(), program_.folders.program,
                      [this, name](const Result<std::string>& html) { Show(name, html); }));
}

// What is typed does not move what the person looks at.
void TemplateForm::Show(const QString& name, const Result<std::string>& html) {
  if (name != Name()) return;  // another one was chosen meanwhile, or none
  const auto editable = html ? document::CheckEditable(*html) : Result<void>(html.error());
  if (!editable) {
    stack_->setCurrentIndex(0);
    return status_->Fail(editable.error());
  }
  const bool is_same = stack_->currentIndex() == 1 && name == shown_;
  const int place = is_same ? preview_->Evaluate("scrollY").toInt() : 0;
  shown_ = name;
  preview_->SetHtml(ToQt(*html));
  if (place > 0) preview_->Evaluate(QString("scrollTo(0,%1)").arg(place));
  stack_->setCurrentIndex(1);
  emit Shown();
}

void TemplateForm::accept() {
  if (!ok_->isEnabled()) return;
  if (own_->is_at_work()) return status_->Say(own_->progress());
  const auto choice = Choice();
  if (own_->Chosen().isEmpty()) {
    if (const auto complaint = document::CheckDesign(choice)) {
      program_.prompts.Warn(complaint->message);
      const std::array<QWidget*, 5> controls = {designs_, company_, web_site_, address_, subject_};
      controls.at(static_cast<std::size_t>(*complaint->control))->setFocus();
      return;
    }
  }
  if (!MayReplace()) return;
  SetBusy(true);
  task_.Start(Reading({choice, own_->Chosen()}, own_->templates(), program_.folders.program,
                      [this](const Result<std::string>& html) { Replace(html); }));
}

bool TemplateForm::MayReplace() {
  const auto decision = document::OfferToSave(document_, program_.prompts);
  if (!decision) status_->Fail(decision.error());
  return decision && *decision == document::SaveDecision::kGoOn;
}

// Nothing has happened to the message until the template is there.
void TemplateForm::Replace(const Result<std::string>& html) {
  SetBusy(false);
  if (!html) return status_->Fail(html.error());
  const auto started = document_.StartFrom(*html);
  if (!started) return status_->Fail(started.error());
  QDialog::accept();
}

void TemplateForm::SetBusy(bool busy) {
  for (QWidget* control : std::initializer_list<QWidget*>{designs_, own_, company_, web_site_, address_, subject_, ok_})
    control->setEnabled(!busy);
}

}  // namespace quillcast::desktop

#include "desktop/recipients/recipient_import_form.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

#include "desktop/recipients/group_box.h"
#include "desktop/recipients/import_mapping_panel.h"
#include "desktop/recipients/import_sample_table.h"
#include "desktop/recipients/kept_mapping_box.h"
#include "desktop/widgets/count_bar.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/input_watch.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/progress_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"
#include "recipients/delimiters.h"
#include "recipients/recipient_store.h"

namespace quillcast::desktop {
namespace {

// Those that lists come in; any other name can be typed.
constexpr std::array<const char*, 8> kEncodings = {"UTF-8",      "windows-1252", "windows-1251", "ISO-8859-1",
                                                   "ISO-8859-2", "UTF-16LE",     "Shift_JIS",    "GB18030"};

QPushButton* NamedButton(const char* name, const QString& text, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(name);
  return button;
}

QCheckBox* NamedBox(const char* name, const QString& text, QWidget* parent) {
  auto* box = new QCheckBox(text, parent);
  box->setObjectName(name);
  return box;
}

// Beside each other in the field's parent.
void PutCaption(const QString& text, const char* name, QWidget* field) {
  field->setObjectName(name);
  field->setAccessibleName(QString(text).remove('&').remove(':'));
  auto* caption = new QLabel(text, field->parentWidget());
  caption->setBuddy(field);
  auto* line = new QHBoxLayout(field->parentWidget());
  line->setContentsMargins({});
  line->addWidget(caption);
  line->addWidget(field);
}

}  // namespace

RecipientImportForm::RecipientImportForm(const profile::Program& program, const QString& group, QWidget* parent)
    : QDialog(parent),
      program_(program),
      task_(new BackgroundTask(this)),
      look_(new BackgroundTask(this)),
      tick_(new QTimer(this)),
      file_(new QLineEdit(this)),
      browse_(NamedButton("BrowseButton", tr("&Browse…"), this)),
      group_(new QComboBox(this)),
      kind_(new QComboBox(this)),
      sheets_(new QWidget(this)),
      sheet_(new QComboBox(sheets_)),
      harvest_(new QRadioButton(tr("Every e-mail &address anywhere in the file"), this)),
      delimited_(new QRadioButton(tr("A recipient from each &line, with these fields:"), this)),
      delimiter_(new QComboBox(this)),
      encodings_(new QWidget(this)),
      encoding_(new QComboBox(encodings_)),
      quotes_(NamedBox("QuotationCheckBox", tr("Fields are enclosed in &quotes"), this)),
      rfc4180_(NamedBox("Rfc4180CheckBox", tr("Quotes as spreadsheets &write them (RFC 4180)"), this)),
      skip_(NamedBox("SkipCheckBox", tr("Leave the first line o&ut, it has headings"), this)),
      take_(new QWidget(this)),
      columns_box_(new QLineEdit(take_)),
      get_data_(NamedButton("GetDataButton", tr("&Get Data"), this)),
      propose_(NamedButton("ProposeButton", tr("&Map by Headings"), this)),
      status_(new StatusLine(this)),
      kept_(new KeptMappingBox(program, *status_, this)),
      mapping_(new ImportMappingPanel(this)),
      table_(new ImportSampleTable(this)),
      warnings_(new NotePanel(NoteKind::kWarning, "WarningsPanel", "WarningsLabel", this)),
      progress_(new ProgressPanel("CancelButton", tr("Cancel"), this)),
      bar_(progress_->AddBar("ProgressBar", tr("File read:"))),
      import_(NamedButton("ImportButton", tr("&Import"), this)),
      report_(NamedButton("ReportButton", tr("Re&port"), this)),
      slow_(new QTimer(this)),
      give_up_(*this, *task_, *progress_->button(), program.prompts) {
  MakeWindow();
  ConnectControls();
  group_->setPlaceholderText(tr("Choose a group"));
  if (const auto filled = FillGroupBox(*group_, program, group); !filled) status_->Fail(filled.error());
  EnableControls();
  file_->setFocus();
}

// A box is left as it is hidden, and what was typed there is taken: the members have to be there still.
RecipientImportForm::~RecipientImportForm() { hide(); }

void RecipientImportForm::MakeWindow() {
  setObjectName("RecipientImportForm");
  setWindowTitle(tr("Import Recipients"));
  setAcceptDrops(true);
  resize(800, 640);
  import_->setDefault(true);
  auto* column = new FormColumn(this);
  FormGrid* what = column->AddGrid();
  what->Add("BrowseTextBox", tr("&From file:"), file_, {browse_});
  what->Add("DataComboBox", tr("&To group:"), group_);
  AddFormats(column);
  AddModes(column);
  AddMapping(column);
  column->Add(warnings_);
  warnings_->hide();
  column->Add(status_);
  progress_->AddBeside(import_);
  progress_->AddBeside(report_);
  column->Add(progress_);
}

void RecipientImportForm::AddFormats(FormColumn* column) {
  kind_->addItem(tr("Find out"), static_cast<int>(recipients::FileFormat::kAuto));
  for (const auto format : recipients::kFormats)
    kind_->addItem(Translated(recipients::NameOf(format)), static_cast<int>(format));
  sheet_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  sheet_->setMinimumContentsLength(16);
  encoding_->setEditable(true);
  encoding_->setInsertPolicy(QComboBox::NoInsert);
  encoding_->addItem(tr("Find out"));
  for (const char* encoding : kEncodings) encoding_->addItem(encoding);
  PutCaption(tr("S&heet:"), "SheetComboBox", sheet_);
  PutCaption(tr("&Encoding:"), "EncodingComboBox", encoding_);
  column->AddGrid()->Add("KindComboBox", tr("&Kind:"), kind_, {sheets_, encodings_});
}

void RecipientImportForm::AddModes(FormColumn* column) {
  for (const recipients::Delimiter& delimiter : recipients::kDelimiters) {
    delimiter_->addItem(Translated(delimiter.name), QChar::fromLatin1(delimiter.character));
  }
  FormGrid* modes = column->AddGrid();
  modes->AddWide("RadioButton1", harvest_);
  modes->AddWide("RadioButton2", delimited_);
  harvest_->setChecked(true);
  modes->Add("DelimitComboBox", tr("&Delimiter:"), delimiter_, {quotes_, rfc4180_});
  column->AddGrid()->Add("MappingComboBox", tr("Kept mappi&ng:"), kept_, kept_->buttons());
}

void RecipientImportForm::AddMapping(FormColumn* column) {
  PutCaption(tr("&Columns:"), "ColumnsTextBox", columns_box_);
  columns_box_->setPlaceholderText(tr("All, or “25,1,2”"));
  columns_box_->setToolTip(PlainTip(
      tr("The columns of the file that are its fields here, by their numbers and in this order; eighteen at most.")));
  column->AddLine({get_data_, propose_, skip_, take_});
  mapping_->setMinimumSize(300, 130);
  table_->setMinimumHeight(130);
  column->AddLine({mapping_, table_}, 1);
}

void RecipientImportForm::ConnectControls() {
  connect(browse_, &QPushButton::clicked, this, &RecipientImportForm::Browse);
  connect(file_, &QLineEdit::editingFinished, this, &RecipientImportForm::TakeTypedFile);
  new InputWatch([this] { GiveDeedUp(); }, this);
  connect(delimited_, &QRadioButton::toggled, this, &RecipientImportForm::EnableControls);
  connect(delimited_, &QRadioButton::toggled, this, &RecipientImportForm::ShowWarnings);
  connect(get_data_, &QPushButton::clicked, this, &RecipientImportForm::GetData);
  connect(propose_, &QPushButton::clicked, this, &RecipientImportForm::Propose);
  connect(delimiter_, &QComboBox::activated, this, [this] {
    delimiter_is_open_ = false;
    LookAtFile();
  });
  connect(kind_, &QComboBox::activated, this, &RecipientImportForm::LookAtFile);
  connect(sheet_, &QComboBox::activated, this, [this] { sheet_choice_.Pick(FromQt(sheet_->currentText())); });
  for (QComboBox* list : {sheet_, encoding_})
    connect(list, &QComboBox::activated, this, &RecipientImportForm::LookAgain);
  connect(encoding_->lineEdit(), &QLineEdit::editingFinished, this, &RecipientImportForm::LookAgain);
  connect(columns_box_, &QLineEdit::editingFinished, this, &RecipientImportForm::TakeColumns);
  connect(rfc4180_, &QCheckBox::toggled, this, [this] {
    EnableControls();
    LookAgain();
  });
  connect(kept_, &KeptMappingBox::KeepAsked, this, &RecipientImportForm::KeepMapping);
  connect(kept_, &KeptMappingBox::Applied, this, &RecipientImportForm::ApplyMapping);
  slow_->setSingleShot(true);
  connect(slow_, &QTimer::timeout, this, [this] {
    if (awaited_.deed() != recipients::AwaitedDeed::kImport) status_->Say(tr("Looking at %1…").arg(looked_at_));
  });
  connect(quotes_, &QCheckBox::toggled, this, [this] {
    if (sample_) proposed_ = recipients::ProposeMapping(*sample_, quotes_->isChecked());
    EnableControls();
    ShowSample();
    ShowWarnings();
  });
  connect(skip_, &QCheckBox::toggled, this, [this] {
    if (recipients::SkipsMany(skipped_)) LookAtFile();
    ShowSample();
    ShowWarnings();
  });
  connect(mapping_, &ImportMappingPanel::Changed, this, [this] {
    table_->ShowMapping(mapping_->Mapping());
    ShowWarnings();
  });
  connect(table_, &ImportSampleTable::Chosen, this, &RecipientImportForm::TakeHeading);
  connect(import_, &QPushButton::clicked, this, &RecipientImportForm::Import);
  connect(report_, &QPushButton::clicked, this, &RecipientImportForm::ShowReport);
  connect(progress_, &ProgressPanel::Pressed, this, &RecipientImportForm::reject);
  connect(tick_, &QTimer::timeout, this, &RecipientImportForm::TakeProgress);
}

// The button that cancels, and closes, is always there.
void RecipientImportForm::EnableControls() {
  const bool is_idle = !task_->is_running();
  for (QWidget* control :
       std::initializer_list<QWidget*>{file_, browse_, group_, kind_, harvest_, delimited_, import_, report_}) {
    control->setEnabled(is_idle);
  }
  const auto format = Format();
  const bool is_delimited = is_idle && delimited_->isChecked();
  const bool is_text = format == recipients::FileFormat::kDelimited;
  encodings_->setEnabled(is_idle && format != recipients::FileFormat::kSpreadsheet);
  sheets_->setEnabled(is_idle);
  const bool may_have_sheets = !sample_ || format == recipients::FileFormat::kSpreadsheet;  // another may be readable
  sheets_->setVisible(sheet_->count() > 1 && may_have_sheets);
  for (QWidget* control : std::initializer_list<QWidget*>{get_data_, mapping_, table_})
    control->setEnabled(is_delimited);
  kept_->EnableAll(is_delimited);
  delimiter_->setEnabled(is_delimited && is_text);
  quotes_->setEnabled(is_delimited && is_text && !rfc4180_->isChecked());
  rfc4180_->setEnabled(is_delimited && is_text && !quotes_->isChecked());
  skip_->setEnabled(is_delimited && !recipients::HasKnownFields(format));
  take_->setEnabled(is_delimited && !recipients::HasKnownFields(format));
  propose_->setEnabled(is_delimited && proposed_.has_value());
}

}  // namespace quillcast::desktop

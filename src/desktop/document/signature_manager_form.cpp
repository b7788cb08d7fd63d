#include "desktop/document/signature_manager_form.h"

#include <QCheckBox>
#include <QPushButton>

#include "desktop/document/ask_for.h"
#include "desktop/document/editor_bar.h"
#include "desktop/document/html_editor.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/note_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/soon.h"
#include "desktop/widgets/status_line.h"
#include "document/body_source.h"
#include "document/document_pictures.h"
#include "document/picture_places.h"
#include "document/signature.h"

namespace quillcast::desktop {

SignatureManagerForm::SignatureManagerForm(const profile::Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      editor_(new HtmlEditor(this)),
      bar_(new EditorBar(editor_, this)),
      notes_(new NotePanel(NoteKind::kWarning, "SignatureNotes", "SignatureNotesLabel", this)),
      on_(new QCheckBox(tr("&Begin new messages with the signature"), this)),
      status_(new StatusLine(this)) {
  BuildWindow();
  BuildBar();
  SetReady(false);
  // The editor's engine takes longer than the window.
  Soon(this, [this] { Load(); });
}

void SignatureManagerForm::BuildWindow() {
  setObjectName("SignatureManagerForm");
  setWindowTitle(tr("Signature"));
  resize(680, 480);
  editor_->setObjectName("SignatureEditor");
  editor_->setMinimumHeight(120);
  editor_->LetTabLeave();
  editor_->SetPictureFolder(PathToQt(program_.folders.Pictures()));
  editor_->SetPicturePlaces(document::PicturePlaces(program_.folders));
  on_->setObjectName("SignatureCheckBox");
  notes_->hide();
  auto* column = new FormColumn(this);
  column->Add(bar_);
  column->Add(editor_, 1);
  column->Add(notes_);
  column->Add(on_);
  column->Add(status_);
  auto* buttons = column->AddButtons(QDialogButtonBox::Save | QDialogButtonBox::Reset | QDialogButtonBox::Close);
  save_ = buttons->button(QDialogButtonBox::Save);
  save_->setObjectName("SaveButton");
  save_->setDefault(true);
  reset_ = buttons->button(QDialogButtonBox::Reset);
  reset_->setObjectName("ResetButton");
  connect(reset_, &QPushButton::clicked, this, &SignatureManagerForm::Reset);
  connect(editor_, &HtmlEditor::Trouble, this,
          [this](const QString& sentence) { status_->Say(sentence, NoteKind::kWarning); });
  connect(editor_, &HtmlEditor::Snapshot, this, [this](const QString& html) { ShowNotes(FromQt(html)); });
}

// What the editor asks for is the same as in the main window.
void SignatureManagerForm::BuildBar() {
  const auto ask = [this](const std::filesystem::path& file) {
    AskForPicture(*editor_, program_.prompts, program_.folders.Pictures(), file, this);
  };
  bar_->AddAsking("colour", tr("Font"), [this] { AskForFont(*editor_, this); });
  bar_->AddAsking("picture", tr("Picture"), [ask] { ask({}); });
  bar_->AddAsking("link", tr("Hyperlink"), [this] { AskForLink(*editor_, this); });
  connect(editor_, &HtmlEditor::PictureOpened, this, [ask] { ask({}); });
  // Behind the drop or the paste, which has to end first.
  connect(editor_, &HtmlEditor::PicturesOffered, this, [this, ask](const QStringList& files) {
    Soon(this, [ask, files] {
      for (const QString& file : files) ask(PathFromQt(file));
    });
  });
}

void SignatureManagerForm::SetReady(bool ready) {
  for (QWidget* control : std::initializer_list<QWidget*>{bar_, on_, save_}) control->setEnabled(ready);
}

void SignatureManagerForm::Load() {
  const auto signature = document::LoadSignature(program_.settings);
  if (!signature) return status_->Fail(signature.error());
  on_->setChecked(signature->is_on);
  if (const auto editable = document::CheckEditable(signature->html); !editable) return status_->Fail(editable.error());
  if (!editor_->SetHtml(ToQt(signature->html)))
    return status_->Say(tr("The editor did not take the signature. Close this window and open it again."),
                        NoteKind::kFailure);
  SetReady(true);
  editor_->BeginTyping();
  ShowNotes(signature->html);
  emit Ready();
}

void SignatureManagerForm::ShowNotes(const std::string& html) {
  if (!save_->isEnabled()) return;  // it is being saved
  task_.Start([this, html](const platform::CancelToken&) -> std::function<void()> {
    return [this, lines = InWords(document::SignatureNotes(html))] {
      notes_->SetText(lines.join('\n'));
      notes_->setVisible(!lines.isEmpty());
    };
  });
}

void SignatureManagerForm::accept() {
  if (!save_->isEnabled()) return;
  const auto text = editor_->Text();
  if (!text) return status_->Fail(text.error());
  SetReady(false);
  status_->Say(tr("Copying the pictures… Close gives it up."));
  task_.Start([this, html = FromQt(*text),
               folders = program_.folders](const platform::CancelToken& cancel) -> std::function<void()> {
    const auto pictures = folders.Pictures();
    return [this, kept = document::CopyPictures(html, {}, document::PicturePlaces(folders),
                                                {pictures, document::FileAddress(pictures)}, &cancel)] { Save(kept); };
  });
}

void SignatureManagerForm::Save(const Result<std::string>& html) {
  SetReady(true);
  status_->Say({});
  if (!html) return status_->Fail(html.error());
  const auto saved = document::SaveSignature({on_->isChecked(), *html}, program_.settings);
  if (!saved) return status_->Fail(saved.error());
  QDialog::accept();
}

void SignatureManagerForm::Reset() {
  const auto reset = document::ResetSignature(program_.settings, program_.prompts);
  if (!reset) return status_->Fail(reset.error());
  if (*reset) QDialog::accept();
}

}  // namespace quillcast::desktop

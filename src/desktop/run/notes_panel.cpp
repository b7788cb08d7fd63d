#include "desktop/run/notes_panel.h"

#include <QVBoxLayout>

#include "desktop/run/ask_prepared.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

constexpr int kTallest = 90;  // pixels: the report is what the dialog is for

}  // namespace

NotesPanel::NotesPanel(const profile::Program& program, QWidget* parent)
    : QWidget(parent),
      program_(program),
      look_(new BackgroundTask(this)),
      state_(new StatusLine(this, "NotesLabel")),
      notes_(new RowList(
          "NotesList", tr("What to know before sending"), {{}},
          [this](std::size_t row, int) { return found_.at(static_cast<qsizetype>(row)); }, this)) {
  notes_->SetLongText(LongText::kWrapped);
  notes_->setMaximumHeight(kTallest);
  notes_->hide();
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(state_);
  column->addWidget(notes_);
}

void NotesPanel::AddQuestion(QWidget* question) { layout()->addWidget(question); }

void NotesPanel::LookAt(const document::MessageDocument& document, const run::ChosenGroup& group) {
  notes_->hide();
  state_->Say(tr("Looking over the message and the whole group…"));
  const auto look_over = [](run::PreparedRun& prepared) {
    return prepared.LookOver(run::PreparedRun::Server::kIsAsked);
  };
  AskPrepared(look_, program_, document, group, look_over, [this](const Result<run::MessageLook>& found) {
    if (!found) {
      Show({InWords(found.error())}, {});
      return;
    }
    Show(InWords(found->Troubles()), InWords(found->along));
    if (!found->size.empty()) state_->setText(state_->text() + ' ' + InWords(found->size));
  });
}

void NotesPanel::LookAt(const GoOnRequest& request, const run::PaceTexts& pace) {
  notes_->hide();
  state_->Say(tr("Looking at what has changed since the run began…"));
  look_->Start(
      [this, request, pace, &program = program_](const platform::CancelToken& cancel) -> std::function<void()> {
        auto prepared = run::PrepareToGoOn(request.run, request.kind, request.choice, run::PlaceOf(program, cancel));
        if (prepared) prepared->Ask(pace);
        auto changes = prepared ? prepared->WhatChangedSince() : Result<std::vector<Sentence>>(prepared.error());
        return [this, changes = std::move(changes)] {
          Show(changes ? InWords(*changes) : QStringList(InWords(changes.error())), {});
          if (found_.isEmpty()) state_->Say(tr("Nothing has changed since the run began."));
        };
      });
}

void NotesPanel::Show(const QStringList& troubles, const QStringList& others) {
  found_ = troubles + others;
  notes_->Reset(static_cast<std::size_t>(found_.size()));
  notes_->setVisible(!found_.isEmpty());
  if (troubles.isEmpty()) {
    state_->Say(tr("Nothing was found that looks wrong."));
  } else {
    state_->Say(tr("Before you send:"), NoteKind::kWarning);
  }
}

void NotesPanel::Close() {
  look_->Cancel();
  hide();
}

}  // namespace quillcast::desktop

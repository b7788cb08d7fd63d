#include "desktop/shell/update_main_form.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <memory>

#include "desktop/widgets/background_task.h"
#include "desktop/widgets/breakable.h"
#include "desktop/widgets/digits_filter.h"
#include "desktop/widgets/form_column.h"
#include "desktop/widgets/form_grid.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/status_line.h"

namespace quillcast::desktop {
namespace {

constexpr int kLongestWord = 40;  // of the maker's notes

}  // namespace

UpdateMainForm::UpdateMainForm(const profile::Program& program, const platform::Environment& environment,
                               QWidget* parent)
    : QDialog(parent),
      program_(program),
      environment_(environment),
      task_(new BackgroundTask(this)),
      proxy_(new QCheckBox(tr("&Use a proxy"), this)),
      address_(new QLineEdit(this)),
      port_(new QLineEdit(this)),
      timeout_(new QLineEdit(this)),
      status_(new StatusLine(this)),
      check_(new QPushButton(tr("C&heck"), this)) {
  BuildWindow();
  ShowSettings();
  check_->setFocus();
}

UpdateMainForm::~UpdateMainForm() = default;

void UpdateMainForm::BuildWindow() {
  setObjectName("UpdateMainForm");
  setWindowTitle(tr("Check for Updates"));
  setMinimumWidth(480);
  auto* column = new FormColumn(this);
  auto* what = column->Add(
      new QLabel(tr("This is Quillcast %1. Check asks the maker's server which version is the latest. Nothing is "
                    "downloaded or installed, and nothing about you goes along.")
                     .arg(ToQt(update::TextOf(update::OwnVersion()))),
                 this));
  what->setWordWrap(true);
  AddProxy(*column);
  column->Add(status_);
  auto* buttons = column->AddButtons(QDialogButtonBox::Close);
  check_->setObjectName("CheckButton");
  check_->setDefault(true);
  LetFollow(check_);
  buttons->addButton(check_, QDialogButtonBox::ActionRole);
  connect(check_, &QPushButton::clicked, this, [this] { task_->is_running() ? task_->Cancel() : Check(); });
  auto* page = buttons->addButton(tr("Home &Page"), QDialogButtonBox::ActionRole);
  page->setObjectName("HomePageButton");
  connect(page, &QPushButton::clicked, this, [this] {
    const auto opened = program_.desktop.OpenPage(update::kHomePage);
    if (!opened) status_->Fail(opened.error());
  });
}

void UpdateMainForm::AddProxy(FormColumn& column) {
  FormGrid* grid = column.AddBox(tr("How to reach it"));
  grid->AddPlain("ProxyCheckBox", proxy_);
  grid->Add("AddressTextBox", tr("&Address:"), address_);
  grid->Add("PortTextBox", tr("P&ort:"), port_);
  grid->Add("TimeoutTextBox", tr("&Give up after:"), timeout_, {new QLabel(tr("minutes"))});
  address_->setPlaceholderText(tr("proxy.example.org"));
  for (QLineEdit* digits : {port_, timeout_}) {
    digits->setValidator(new DigitsFilter(digits));
    digits->setMaximumWidth(90);
  }
  connect(proxy_, &QCheckBox::toggled, address_, &QWidget::setEnabled);
  connect(proxy_, &QCheckBox::toggled, port_, &QWidget::setEnabled);
}

void UpdateMainForm::ShowSettings() {
  const auto loaded = update::UpdateSettings::Load(program_.settings);
  const update::UpdateSettings settings = loaded ? *loaded : update::UpdateSettings();
  if (!loaded) status_->Fail(loaded.error());
  proxy_->setChecked(settings.uses_proxy);
  address_->setText(ToQt(settings.address));
  port_->setText(ToQt(settings.port));
  timeout_->setText(ToQt(settings.timeout));
  for (QWidget* box : {address_, port_}) box->setEnabled(settings.uses_proxy);
}

update::UpdateSettings UpdateMainForm::Collect() const {
  return {proxy_->isChecked(), FromQt(address_->text().trimmed()), FromQt(port_->text()), FromQt(timeout_->text())};
}

// Keeps what may be asked with; what cannot be kept is told, and asked with all the same.
bool UpdateMainForm::TakeSettings(const update::UpdateSettings& settings) {
  if (const auto complaint = update::CheckSettings(settings)) {
    program_.prompts.Warn(complaint->message);
    const auto control = complaint->control.value_or(update::UpdateControl::kTimeout);
    QLineEdit* box = control == update::UpdateControl::kAddress ? address_
                     : control == update::UpdateControl::kPort  ? port_
                                                                : timeout_;
    box->setFocus();
    box->selectAll();
    return false;
  }
  IgnoreErrors(settings.Save(program_.settings));
  return true;
}

void UpdateMainForm::Check() {
  const auto settings = Collect();
  if (!TakeSettings(settings)) return;
  status_->Say(tr("Asking…"));
  check_->setText(tr("&Cancel"));
  task_->Start([this, question = update::QuestionOf(settings, environment_),
                &clock = program_.clock](const platform::CancelToken& cancel) {
    const net::Patience patience{clock, cancel, platform::Stop::kStop,
                                 net::Deadline::After(clock.Monotonic(), question.patience)};
    const auto answer =
        std::make_shared<const Result<update::Answer>>(update::AskForLatest(question, update::OwnVersion(), patience));
    return [this, answer] { Tell(*answer); };
  });
}

void UpdateMainForm::Tell(const Result<update::Answer>& answer) {
  check_->setText(tr("C&heck"));
  if (!answer) return status_->Fail(answer.error());
  status_->Say(Breakable(InWords(update::Describe(*answer, update::OwnVersion())), kLongestWord),
               answer->standing == update::Standing::kNewer ? NoteKind::kWarning : NoteKind::kInformation);
}

}  // namespace quillcast::desktop

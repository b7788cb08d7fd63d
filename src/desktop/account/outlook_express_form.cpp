#include "desktop/account/outlook_express_form.h"

#include <QCheckBox>
#include <QLabel>
#include <array>
#include <memory>

#include "desktop/widgets/form_column.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/row_list.h"
#include "desktop/widgets/status_line.h"
#include "platform/text.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kMostLines = 3;  // of what was passed over

}  // namespace

OutlookExpressForm::OutlookExpressForm(const profile::Program& program, const std::vector<account::AccountRoot>& places,
                                       QWidget* parent)
    : QDialog(parent),
      program_(program),
      list_(new RowList(
          "AccountListBox", tr("Accounts"),
          {{tr("Account"), 14}, {tr("Sender"), 30}, {tr("Server"), 48}, {tr("Program"), 12}},
          [this](std::size_t row, int column) { return TextOf(row, column); }, this)),
      port_(new QCheckBox(tr("Take its &port too, in place of 25"), this)),
      security_(new QCheckBox(tr("Take over how its connection is &secured"), this)),
      user_name_(new QCheckBox(tr("Take its &user name, and sign in with it"), this)),
      passed_over_(new StatusLine(this, "PassedOverLabel")),
      status_(new StatusLine(this)),
      look_(new BackgroundTask(this)) {
  setObjectName("OutlookExpressForm");
  setWindowTitle(tr("Import Account"));
  resize(820, 420);
  port_->setObjectName("PortCheckBox");
  security_->setObjectName("SecurityCheckBox");
  user_name_->setObjectName("UserNameCheckBox");
  auto* column = new FormColumn(this);
  auto* what = column->Add(new QLabel(
      tr("Name, address and server of the account that you choose become those of this program. No password is taken."),
      this));
  what->setWordWrap(true);
  column->Add(list_, 1);
  for (QCheckBox* box : {port_, security_, user_name_}) column->Add(box);
  column->Add(passed_over_);
  column->Add(status_);
  column->AddButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(list_, &RowList::ChosenChanged, this, &OutlookExpressForm::OfferWhatItHas);
  connect(list_, &RowList::doubleClicked, this, &OutlookExpressForm::accept);
  passed_over_->hide();
  OfferWhatItHas();
  list_->setFocus();
  Look(places);
}

// The list is gone before what its cells are asked of.
OutlookExpressForm::~OutlookExpressForm() { hide(); }

void OutlookExpressForm::Look(const std::vector<account::AccountRoot>& places) {
  status_->Say(tr("Looking for accounts…"));
  look_->Start([this, places](const platform::CancelToken& cancel) {
    auto found = std::make_shared<account::FoundAccounts>(account::FindAccounts(places, cancel));
    return [this, found] { Show(std::move(*found)); };
  });
}

void OutlookExpressForm::Show(account::FoundAccounts found) {
  found_ = std::move(found);
  list_->SetEmptyText(
      tr("No account of Thunderbird, Evolution or Claws Mail was found on this computer. Press Cancel, "
         "and type yours in."));
  list_->Reset(found_.accounts.size());
  passed_over_->Say(PassedOver(), NoteKind::kWarning);
  passed_over_->setVisible(!found_.passed_over.empty());
  const auto count = static_cast<std::int64_t>(found_.accounts.size());
  status_->Say(count == 0 ? QString() : Counted(count, tr("1 account was found."), tr("%1 accounts were found.")));
}

QString OutlookExpressForm::PassedOver() const {
  QStringList lines = InWords(found_.passed_over);
  const auto more = static_cast<std::int64_t>(lines.size()) - static_cast<std::int64_t>(kMostLines);
  lines = lines.mid(0, kMostLines);
  if (more > 0) lines << tr("And %1 more of the same kind.").arg(more + found_.also_passed_over);
  return lines.join('\n');
}

QString OutlookExpressForm::TextOf(std::size_t row, int column) const {
  const account::FoundAccount& account = found_.accounts[row];
  const std::array<std::string, 4> texts = {
      account.account_name, account::SenderOf(account), {}, std::string(account.program)};
  if (column == 2) return InWords(account::ServerOf(account));
  return ToQt(platform::Printable(texts.at(static_cast<std::size_t>(column))));
}

const account::FoundAccount* OutlookExpressForm::Chosen() const {
  const auto chosen = list_->Chosen();
  return chosen.empty() ? nullptr : &found_.accounts[chosen.front()];
}

void OutlookExpressForm::OfferWhatItHas() {
  const account::FoundAccount* account = Chosen();
  port_->setEnabled(account != nullptr && !account->port.empty());
  security_->setEnabled(account != nullptr && !account->security.empty());
  user_name_->setEnabled(account != nullptr && !account->user_name.empty());
}

void OutlookExpressForm::accept() {
  const account::FoundAccount* account = Chosen();
  if (account == nullptr) {
    program_.prompts.Warn("Please select an account.");
    return;
  }
  auto written = account::ImportAccount(
      program_.settings, *account,
      {.port = port_->isChecked(), .security = security_->isChecked(), .user_name = user_name_->isChecked()},
      profile::kWindowPatience.lock_wait);
  if (!written) {
    status_->Fail(written.error());
    return;
  }
  written_ = *std::move(written);
  QDialog::accept();
}

}  // namespace quillcast::desktop

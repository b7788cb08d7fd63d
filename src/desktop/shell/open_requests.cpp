#include "desktop/shell/open_requests.h"

#include <QStringList>
#include <algorithm>
#include <utility>

#include "desktop/shell/commands.h"
#include "desktop/shell/shell.h"
#include "desktop/shell/status_panel.h"
#include "desktop/widgets/qt_text.h"
#include "desktop/widgets/soon.h"
#include "document/edited_document.h"
#include "platform/text.h"
#include "profile/start_message.h"

namespace quillcast::desktop {
namespace {

constexpr std::size_t kLongestShown = 100;

QString Shown(const std::string& argument) { return ToQt(platform::Printable(argument, kLongestShown)); }

}  // namespace

OpenRequests::OpenRequests(Shell& shell, std::function<bool()> is_free, QObject* parent)
    : QObject(parent), shell_(shell), is_free_(std::move(is_free)) {}

void OpenRequests::Add(const std::vector<std::string>& arguments) {
  if (arguments.empty()) return;
  Wait(arguments);
  Resume();
}

void OpenRequests::Wait(const std::vector<std::string>& arguments) {
  const QString now = Shown(arguments.front());
  const QString before = waiting_.empty() ? QString() : Shown(waiting_.front());
  waiting_.insert(waiting_.begin(), arguments.begin(), arguments.end());
  waiting_.resize(std::min(waiting_.size(), profile::kMostArguments));
  if (is_free_() && !opens_) return;
  shell_.Say(before.isEmpty() ? tr("%1 waits until this window is free.").arg(now)
                              : tr("%1 waits until this window is free, in the place of %2.").arg(now, before));
}

bool OpenRequests::HasWindow() const {
  const auto& first = opens_ ? opening_ : waiting_;
  return !first.empty() && first.front().starts_with('/') && document::IsNamedAsMessageFile(first.front());
}

// A document may be there when the main window is shown; another window would stand there before it.
bool OpenRequests::MayOpen() const { return !opens_ && is_free_() && (shell_.window.isVisible() || !HasWindow()); }

// From the loop of events: whatever has just ended may go on for a moment.
void OpenRequests::Resume() {
  if (!waiting_.empty()) Soon(this, [this] { OpenWaiting(); });
}

void OpenRequests::OpenWaiting() {
  while (!waiting_.empty() && MayOpen()) {
    opens_ = true;
    opening_ = std::exchange(waiting_, {});
    Open(opening_);
    opens_ = false;
    emit Opened();
  }
}

void OpenRequests::Open(const std::vector<std::string>& arguments) {
  shell_.Say({});  // nothing waits any longer
  const std::string& first = arguments.front();
  const bool is_file = first.starts_with('/');
  const bool is_open = is_file ? OpenFile(shell_, first) : BeginFromLink(shell_, first);
  if (arguments.size() == 1) return;
  QString said = shell_.status.said();  // of the first, which is then named
  const std::size_t from = is_open || !said.isEmpty() ? 1 : 0;
  if (is_open && said.isEmpty()) said = tr("There is one message at a time.");
  QStringList others;
  for (std::size_t i = from; i < arguments.size(); ++i) others << Shown(arguments[i]);
  shell_.Say(tr("%1 Not opened: %2.").arg(said, others.join(", ")).trimmed());
}

}  // namespace quillcast::desktop

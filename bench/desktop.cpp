// The window, measured from inside: until the first key typed appears, its memory, and a mailing through it.
//   bench_desktop PROFILE HTML SUBJECT, with QUILLCAST_BENCH_START in nanoseconds of the monotonic clock
//   bench_desktop PROFILE HTML SUBJECT splash: with the splash, until the first key alone
#include <fmt/format.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>

#include "desktop/document/editor_document.h"
#include "desktop/document/html_editor.h"
#include "desktop/document/properties_form.h"
#include "desktop/document/signature_manager_form.h"
#include "desktop/document/template_form.h"
#include "desktop/run/report_view.h"
#include "desktop/run/send_mail_form1.h"
#include "desktop/shell/start_window.h"
#include "desktop/widgets/qt_prompts.h"
#include "desktop/widgets/qt_text.h"
#include "event_loop.h"
#include "platform/environment.h"
#include "platform/file.h"
#include "platform/keyring.h"
#include "profile/startup.h"

namespace quillcast {
namespace {

// Of this process and those it started: what they have for themselves, and their share of what they have together.
long MemoryKiB() {
  long total = 0;
  // The engine's processes are told from those of a run before by their environment.
  const QByteArray mark = "QUILLCAST_BENCH_START=" + qgetenv("QUILLCAST_BENCH_START");
  for (const QString& entry : QDir("/proc").entryList({"[0-9]*"}, QDir::Dirs)) {  // without "self"
    QFile environment("/proc/" + entry + "/environ");
    QFile status("/proc/" + entry + "/smaps_rollup");
    if (!environment.open(QIODevice::ReadOnly) || !status.open(QIODevice::ReadOnly)) continue;
    if (!environment.readAll().split('\0').contains(mark)) continue;
    for (const QByteArray& line : status.readAll().split('\n')) {
      if (line.startsWith("Pss:")) total += line.mid(4).simplified().split(' ').first().toLong();
    }
  }
  return total;
}

// The longest time, in seconds, that the event loop was kept from its next turn.
class LongestPause {
 public:
  LongestPause() {
    QObject::connect(&timer_, &QTimer::timeout, [this] {
      longest_ = std::max(longest_, Now() - last_);
      last_ = Now();
    });
    timer_.start(kTurn);
  }
  double seconds() const { return longest_ - kTurn / 1000.0; }

 private:
  static constexpr int kTurn = 5;  // milliseconds
  QTimer timer_;
  double last_ = Now();
  double longest_ = 0;
};

// A report of a million lines, and a thousand that come to it.
void MeasureReport(const std::filesystem::path& file) {
  std::ofstream out(file, std::ios::binary);
  const auto add = [&](int lines) {
    for (int i = 0; i < lines; ++i) out << "Message sent successfully to somebody, number " << i << ".\r\n";
    out.flush();
  };
  add(1000000);
  const long before = MemoryKiB();
  desktop::ReportView view(nullptr);
  view.resize(700, 400);
  view.show();
  view.Open(file);
  WaitFor([&] { return view.line_count() == 1000000; });
  fmt::print("report_memory {}\n", MemoryKiB() - before);
  double longest = 0;
  for (int round = 0; round < 20; ++round) {
    add(1000);
    const double begin = Now();
    view.Update();
    view.viewport()->repaint();
    longest = std::max(longest, Now() - begin);
  }
  fmt::print("report_lines {:.6f}\n", longest);
}

// A document of 20 MB: until it can be edited, and until an edited one is read back.
void MeasureLargeDocument(desktop::HtmlEditor& editor) {
  QString html = "<html><body>";
  while (html.size() < 20000000)
    html += "<p>Dear $*MergeFirstName*$, <b>this</b> is one paragraph of a great many.</p>\n";
  html += "</body></html>";
  double begin = Now();
  const bool is_shown = editor.SetHtml(html);
  fmt::print("large_shown {:.2f}\n", is_shown ? Now() - begin : -1);
  editor.InsertHtml("x");
  begin = Now();
  const auto text = editor.Text();
  const bool is_read = text && text->size() > 20000000;
  fmt::print("large_read {:.2f}\n", is_read ? Now() - begin : -1);
}

// From `begin` until a form says by `signal` that what `act` asks for is done.
template <typename Form>
double SecondsFrom(double begin, Form& form, void (Form::*signal)(), const std::function<void()>& act) {
  bool is_done = false;
  QObject::connect(&form, signal, &form, [&is_done] { is_done = true; });
  act();
  WaitFor([&is_done] { return is_done; });
  const double seconds = Now() - begin;
  QObject::disconnect(&form, signal, &form, nullptr);
  return seconds;
}

// Until a design that is chosen is shown, the slowest of the five; until the signature can be edited; and until the
// properties of a document of 1 MB are known.
void MeasureComposing(const profile::Program& program) {
  desktop::HtmlEditor page;
  desktop::EditorDocument letter(page, program.folders);
  IgnoreErrors(letter.StartNew(""));  // what does not work, the wait for a design shows
  desktop::TemplateForm designs(program, letter, page, nullptr);
  designs.show();
  QTest::qWait(1000);  // nobody chooses sooner
  auto* list = designs.findChild<QListWidget*>("EmailListBox");
  double longest = 0;
  for (int row = 0; row < list->count(); ++row) {
    longest = std::max(longest,
                       SecondsFrom(Now(), designs, &desktop::TemplateForm::Shown, [&] { list->setCurrentRow(row); }));
  }
  double begin = Now();
  desktop::SignatureManagerForm signature(program, nullptr);
  const double ready = SecondsFrom(begin, signature, &desktop::SignatureManagerForm::Ready, [&] { signature.show(); });
  document::MessageDocument document;
  while (document.html.size() < 1000000)
    document.html += R"(<p>One of <a href="https://example.org">many</a> paragraphs, all with words in them.</p>)";
  begin = Now();
  desktop::PropertiesForm properties(document, {}, true, nullptr);
  const double known = SecondsFrom(begin, properties, &desktop::PropertiesForm::Known, [&] { properties.show(); });
  fmt::print("design {:.4f}\nsignature {:.4f}\nproperties {:.4f}\n", longest, ready, known);
}

int Measure(const profile::Program& program, const std::string& html, const std::string& subject, bool has_splash) {
  const double begun = Now();
  IgnoreErrors(program.settings.Write("Options", "Tips", "0"));  // what is not written, the wait for the page shows
  IgnoreErrors(program.settings.Write("Options", "Splash", has_splash ? "1" : "0"));
  const auto window = desktop::StartWindow(program);
  auto& editor = *window->findChild<desktop::HtmlEditor*>("Editor");
  WaitFor([&] { return QApplication::focusWidget() != nullptr && editor.isAncestorOf(QApplication::focusWidget()); });
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_X);
  WaitFor([&] { return editor.PlainText() == "x"; });
  const char* start = std::getenv("QUILLCAST_BENCH_START");
  fmt::print("usable {:.3f}\n", Now() - (start == nullptr ? begun : std::atof(start) / 1e9));
  if (has_splash) {
    std::fflush(stdout);
    std::_Exit(0);
  }
  QTest::qWait(1500);
  fmt::print("memory {}\n", MemoryKiB());

  const recipients::RecipientStore store(program.folders.Database());
  document::MessageDocument letter;
  letter.subject = subject;
  letter.html = html;
  desktop::SendMailForm1 form(program, letter, {**store.FindGroup("All"), *store.CountRecipients("All")},
                              desktop::SendMailForm1::Server::kReal, window.get());
  form.show();
  auto* button = form.findChild<QPushButton*>("SendButton");
  const LongestPause pause;
  const double begin = Now();
  button->click();
  WaitFor([&] { return form.stage() == desktop::SendMailForm1::Stage::kFinished; });
  fmt::print("sent {:.3f}\npause {:.4f}\n", Now() - begin, pause.seconds());
  MeasureReport(program.folders.temporary / "report.txt");
  MeasureComposing(program);
  MeasureLargeDocument(editor);
  std::fflush(stdout);
  std::_Exit(0);  // closing would ask
}

}  // namespace
}  // namespace quillcast

int main(int argc, char** argv) {
  using namespace quillcast;
  if (argc < 4) return 64;
  ::setenv("QTWEBENGINE_DISABLE_SANDBOX", "1", 0);
  QApplication application(argc, argv);
  const platform::ProcessEnvironment environment;
  const profile::Folders folders =
      profile::ResolveFolders(environment, desktop::PathFromQt(QApplication::applicationFilePath()), argv[1]);
  profile::SettingsStore settings(folders.settings);
  desktop::QtPrompts prompts("bench");
  platform::XdgDesktop desktop(false);
  platform::clsExitWindows power(platform::PowerPlacesOf(platform::ProcessEnvironment()));
  platform::Keyring keyring({});
  platform::SystemClock clock;
  platform::SystemEntropy entropy;
  const auto html = platform::ReadFile(argv[2], 1 << 20);
  return Measure({folders, settings, prompts, desktop, power, clock, entropy, keyring}, html ? *html : "", argv[3],
                 argc > 4);
}

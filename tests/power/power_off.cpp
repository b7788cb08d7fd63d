// power_off BUS PROGRAM [cancel|awake]: asks to be switched off over this bus, else by this program, and prints what
// came of it; cancelled where SIGUSR1 says so, and patient for long then. "awake": stays awake in place of that, prints
// whether it does, and no longer when its input ends. Takes nothing that does not lie in a folder of a
// test, and has no places of its own, so that it never reaches the machine.
#include <csignal>
#include <cstdio>
#include <string_view>

#include "platform/power.h"

quillcast::platform::CancelToken* cancelled = nullptr;

int main(int argc, char** argv) {
  constexpr std::string_view kTestFolder = "/tmp/quillcast-test-";
  const std::string_view bus = argc >= 3 ? argv[1] : "";
  const std::string_view program = argc >= 3 ? argv[2] : "";
  if (!bus.starts_with("unix:path=/tmp/quillcast-test-") || !program.starts_with(kTestFolder)) {
    std::puts("not a test's own bus and program");
    return 64;
  }
  const std::chrono::milliseconds patience(argc == 4 ? 15000 : 700);
  quillcast::platform::CancelToken cancel;
  cancelled = &cancel;
  std::signal(SIGUSR1, [](int) { cancelled->Request(); });
  quillcast::platform::clsExitWindows power({std::string(bus), std::string(program), patience});
  if (argc == 4 && std::string_view(argv[3]) == "awake") {
    auto awake = power.StayAwake("Messages are being sent.");
    std::puts(awake ? "awake" : "may fall asleep");
    std::fflush(stdout);
    quillcast::IgnoreErrors(std::getchar());
    awake.reset();
    std::puts("done");
    std::fflush(stdout);
    quillcast::IgnoreErrors(std::getchar());
    return 0;
  }
  const auto off = power.ExitWindows(cancel);
  std::puts(off ? "taken" : quillcast::InOneLine(off.error()).c_str());
  return off ? 0 : quillcast::ExitCode(off.error().failure);
}

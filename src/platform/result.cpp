#include "platform/result.h"

namespace quillcast {
namespace {

std::function<void(const Error&)>& Listener() {
  static std::function<void(const Error&)> listener;
  return listener;
}

}  // namespace

void OnPassedOver(std::function<void(const Error&)> listener) { Listener() = std::move(listener); }

void NotePassedOver(const Error& error) {
  if (Listener()) Listener()(error);
}

int ExitCode(Failure failure) {
  switch (failure) {
    case Failure::kUsage:
      return 64;
    case Failure::kBadData:
      return 65;
    case Failure::kNoInput:
      return 66;
    case Failure::kUnavailable:
    case Failure::kTimedOut:
      return 69;
    case Failure::kInternal:
      return 70;
    case Failure::kCannotCreate:
      return 73;
    case Failure::kIo:
      return 74;
    case Failure::kTryAgain:
      return 75;
    case Failure::kNotPermitted:
      return 77;
    case Failure::kNotConfigured:
      return 78;
  }
  return 70;
}

Sentence AsLines(const Error& error) {
  return error.remedy.empty() ? error.what : Say("{}\n{}", error.what, error.remedy);
}

Sentence AsSentence(const Error& error) {
  return error.remedy.empty() ? error.what : Say("{} {}", error.what, error.remedy);
}

std::string Describe(const Error& error) { return AsLines(error).InEnglish(); }

std::string InOneLine(const Error& error) { return AsSentence(error).InEnglish(); }

}  // namespace quillcast

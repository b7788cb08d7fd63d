// The one way in which a function of this system fails: it returns a Result that holds an Error in place of a value.
#pragma once

#include <concepts>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <variant>

#include "platform/sentence.h"

namespace quillcast {

// What kind of failure it was; each has its exit code on the command line (sysexits.h), see ExitCode.
enum class Failure {
  kUsage,          // a wrong option, or a check of the user's input that failed
  kBadData,        // an input that exists and cannot be understood
  kNoInput,        // an input that does not exist or cannot be opened
  kUnavailable,    // a server that cannot be reached or does not serve
  kTimedOut,       // a server that did not answer in time
  kInternal,       // a fault of this program
  kCannotCreate,   // an output that cannot be created
  kIo,             // reading or writing failed under way: disk full, device error
  kTryAgain,       // cancelled, or deferred by the other side
  kNotPermitted,   // the system or the user's answer forbids it
  kNotConfigured,  // the mail account was never filled in
};

// What happened to which thing, and what the user can do about it. Both are whole sentences for people.
struct Error {
  Failure failure = Failure::kInternal;
  Sentence what;
  Sentence remedy = {};
};

// The exit code of the command line for a failure.
int ExitCode(Failure failure);

// The two sentences of an error, one line each; the remedy only when there is one.
Sentence AsLines(const Error& error);
std::string Describe(const Error& error);
// What happened and the remedy, parted by a blank.
Sentence AsSentence(const Error& error);
std::string InOneLine(const Error& error);

// A value, or the reason why there is none. Reading the one that is not there ends the program.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::move(value)) {}      // NOLINT(google-explicit-constructor)
  Result(Error error) : state_(std::move(error)) {}  // NOLINT(google-explicit-constructor)

  // True where there is a value. Ask first: `*` and `->` are for then, error() is for the other case.
  explicit operator bool() const { return state_.index() == 0; }
  T& operator*() & { return std::get<0>(state_); }
  const T& operator*() const& { return std::get<0>(state_); }
  T&& operator*() && { return std::get<0>(std::move(state_)); }
  T* operator->() { return &std::get<0>(state_); }
  const T* operator->() const { return &std::get<0>(state_); }
  const Error& error() const { return std::get<1>(state_); }
  // For tests, which expect the value. What is passed over in src says IgnoreErrors, which tells the log.
  T ValueOr(T fallback) && { return *this ? std::get<0>(std::move(state_)) : std::move(fallback); }

 private:
  std::variant<T, Error> state_;
};

template <>
class [[nodiscard]] Result<void> {
 public:
  // Not defaulted: "Result<void>()" would then set every octet of an error to zero first, which each call pays for.
  Result() {}                                        // NOLINT(modernize-use-equals-default)
  Result(Error error) : error_(std::move(error)) {}  // NOLINT(google-explicit-constructor)

  // True where it succeeded. Ask first: error() is for when it did not.
  explicit operator bool() const { return !error_; }
  const Error& error() const { return *error_; }

 private:
  std::optional<Error> error_;
};

// Who hears of the failures that are passed over: the session's log. Nobody at first; to be set while one thread runs.
void OnPassedOver(std::function<void(const Error&)> listener);
void NotePassedOver(const Error& error);

// Marks the places that carry on past a failure on purpose; a search for the name lists them all.
template <typename T>
void IgnoreErrors(const Result<T>& result) {
  if (!result) NotePassedOver(result.error());
}

// The same where something stands in for the value that is missing.
template <typename T>
T IgnoreErrors(Result<T>&& result, std::type_identity_t<T> fallback) {
  if (result) return *std::move(result);
  NotePassedOver(result.error());
  return fallback;
}

// The same for a call of the system that tells by its number how it went. Nothing is told to anybody, so that it may
// stand in a signal handler.
template <std::integral Number>
void IgnoreErrors(Number) {}

// The same for std::filesystem, in place of the std::error_code: fs::remove(file, IgnoreErrors()). What the call gives
// after a failure (false, an empty path) is answer enough there, and nothing is told to anybody.
class IgnoredErrorCode {
 public:
  operator std::error_code&() && { return code_; }  // NOLINT(google-explicit-constructor)

 private:
  std::error_code code_;
};
inline IgnoredErrorCode IgnoreErrors() { return {}; }

}  // namespace quillcast

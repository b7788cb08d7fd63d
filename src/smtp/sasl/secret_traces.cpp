#include "smtp/sasl/secret_traces.h"

#include <openssl/crypto.h>

#include <algorithm>

#include "platform/base64.h"
#include "platform/text.h"

namespace quillcast::smtp {
namespace {

constexpr std::size_t kStretchInSignIn = 4;  // octets
constexpr std::size_t kStretchAfterwards = 8;
constexpr std::size_t kLongestSearched = 4096;

std::size_t Pair(char first, char second) {
  return static_cast<std::size_t>(static_cast<unsigned char>(first)) << 8 | static_cast<unsigned char>(second);
}

std::string Hexadecimal(std::string_view octets) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string out;
  out.reserve(octets.size() * 2);  // growing would leave a copy behind
  for (const char c : octets) {
    const auto octet = static_cast<unsigned char>(c);
    out += kDigits[octet >> 4];
    out += kDigits[octet & 15];
  }
  return out;
}

// Without the "=" at its end, which not everybody writes.
std::string BareBase64(std::string_view octets) {
  std::string out;
  out.reserve((octets.size() + 2) / 3 * 4);
  platform::AppendBase64(out, octets);
  out.resize(out.find_last_not_of('=') + 1);
  return out;
}

bool Has(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

}  // namespace

SecretTraces::~SecretTraces() { OPENSSL_cleanse(&pairs_, sizeof pairs_); }

void SecretTraces::Begin(std::string_view user, std::string_view mechanism, std::string_view password) {
  stretch_ = kStretchInSignIn;
  harmless_ = platform::AsciiLower(std::string(user) + '\n' + std::string(mechanism));
  traces_.clear();
  pairs_.reset();
  Add(password, Of::kPassword);
}

void SecretTraces::End() {
  stretch_ = kStretchAfterwards;
  std::erase_if(traces_, [](const Trace& trace) { return trace.of == Of::kChallenge; });
}

void SecretTraces::Add(std::string_view plain, Of of) {
  // A message that short stands in a sentence by chance; a password that short is one all the same.
  if (plain.empty() || (of != Of::kPassword && plain.size() < kStretchInSignIn)) return;
  Keep(std::string(plain), of);
  // Coded, fewer octets make fewer letters than a stretch has.
  if (plain.size() > 1) Keep(Hexadecimal(plain), of);
  if (plain.size() > 2) Keep(BareBase64(plain), of);
}

void SecretTraces::Keep(std::string&& text, Of of) {
  for (char& c : text) c = platform::AsciiLower(c);
  for (std::size_t n = 1; n < text.size(); ++n) pairs_.set(Pair(text[n - 1], text[n]));
  traces_.push_back({platform::Secret(std::move(text)), of});
}

bool SecretTraces::Tells(const Trace& trace, std::string_view stretch) const {
  return Has(trace.text.view(), stretch) && (trace.of == Of::kPassword || !Has(harmless_, stretch));
}

bool SecretTraces::Holds(std::string_view stretch) const {
  return std::any_of(traces_.begin(), traces_.end(), [&](const Trace& trace) { return Tells(trace, stretch); });
}

bool SecretTraces::In(std::string_view text) const {
  if (traces_.empty()) return false;
  if (text.size() > kLongestSearched) return true;  // made to keep the search busy: nobody says that much to people
  const std::string small = platform::AsciiLower(text);
  const std::string_view seen = small;
  std::size_t known = 1;  // octets up to here that follow each other in some trace
  for (std::size_t n = 1; n < seen.size(); ++n) {
    known = pairs_.test(Pair(seen[n - 1], seen[n])) ? known + 1 : 1;
    if (known >= stretch_ && Holds(seen.substr(n + 1 - stretch_, stretch_))) return true;
  }
  return std::any_of(traces_.begin(), traces_.end(), [&](const Trace& trace) {
    const std::string_view whole = trace.text.view();
    return whole.size() < stretch_ && Has(seen, whole) && Tells(trace, whole);
  });
}

}  // namespace quillcast::smtp

// What gives a secret away when a server repeats it: the password and what both sides of a sign-in said.
#pragma once

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

#include "platform/secret.h"

namespace quillcast::smtp {

// Of each secret any stretch counts, in any case, as it is, in hexadecimal digits or in base 64, so that no part of a
// message gives away what the whole may not. During a sign-in a stretch is short, for then a server has every reason to
// repeat it; afterwards it is long, so that a password made of common words does not hide the replies to messages.
class SecretTraces {
 public:
  SecretTraces() = default;
  ~SecretTraces();
  SecretTraces(const SecretTraces&) = delete;
  SecretTraces& operator=(const SecretTraces&) = delete;

  // A sign-in begins. The user and the mechanism's name may be said, unless the password holds the same.
  void Begin(std::string_view user, std::string_view mechanism, std::string_view password);
  void AddChallenge(std::string_view plain) { Add(plain, Of::kChallenge); }
  void AddResponse(std::string_view plain) { Add(plain, Of::kResponse); }
  // The sign-in is over. A challenge is worth nothing without its response, and often holds the server's name.
  void End();

  // Whether a text of the server's may not be shown. One of more than 4,096 octets never is.
  bool In(std::string_view text) const;

 private:
  enum class Of { kPassword, kChallenge, kResponse };
  struct Trace {
    platform::Secret text;  // in small letters, as all here
    Of of;
  };

  void Add(std::string_view plain, Of of);
  void Keep(std::string&& text, Of of);
  bool Tells(const Trace& trace, std::string_view stretch) const;
  bool Holds(std::string_view stretch) const;

  std::size_t stretch_ = 0;
  std::string harmless_;
  std::vector<Trace> traces_;
  std::bitset<65536> pairs_;  // which octets follow each other in any trace: what spares most texts the search
};

}  // namespace quillcast::smtp

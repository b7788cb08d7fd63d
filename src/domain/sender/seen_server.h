// A server that an account gives its mail to, as the receivers of the mail see it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "domain/sender/answers.h"

namespace quillcast::domain {

// With the addresses of it that others see: no loopback and no private ones, ten at most.
struct SeenServer {
  std::string name;
  std::vector<net::IpAddress> addresses = {};
};

// Nothing while it is not known.
std::optional<SeenServer> LookAtServer(const std::string& name, Answers& answers);

}  // namespace quillcast::domain

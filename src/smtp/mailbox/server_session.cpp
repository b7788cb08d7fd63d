#include "smtp/mailbox/server_session.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/text.h"

namespace quillcast::smtp {
namespace {

constexpr std::size_t kLongestCommand = 2048;    // 512 (RFC 5321 4.5.3.1.4) and room for every extension's parameters
constexpr std::size_t kLongestAuthLine = 12288;  // RFC 4954 4
constexpr int kMostFaults = 20;

bool HasControls(std::string_view line) {
  return std::any_of(line.begin(), line.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && c != '\t') || byte == 0x7F;
  });
}

// A page in a browser can have a request sent to any port of this computer, with mail commands of its own choice as its
// content. They are not reached: the request's first line ends the session, or one of its fields where that line is too
// long.
bool IsOfTheWeb(std::string_view line) {
  constexpr std::string_view kMethods[] = {"GET",    "POST",    "PUT",   "HEAD", "OPTIONS",
                                           "DELETE", "CONNECT", "PATCH", "TRACE"};
  const auto verb = SplitCommand(line).verb;
  const auto last = line.substr(line.rfind(' ') + 1);
  return verb.ends_with(':') || last.starts_with("HTTP/") ||
         std::find(std::begin(kMethods), std::end(kMethods), verb) != std::end(kMethods);
}

}  // namespace

const ServerSession::CommandRow ServerSession::kCommands[] = {
    {"MAIL", true, &ServerSession::Mail},           {"RCPT", true, &ServerSession::Rcpt},
    {"DATA", false, &ServerSession::Data},          {"BDAT", true, &ServerSession::Bdat},
    {"EHLO", true, &ServerSession::Ehlo},           {"HELO", true, &ServerSession::Helo},
    {"RSET", false, &ServerSession::Rset},          {"NOOP", true, &ServerSession::Noop},
    {"QUIT", false, &ServerSession::Quit},          {"STARTTLS", false, &ServerSession::StartTls},
    {"AUTH", true, &ServerSession::Auth},           {"VRFY", true, &ServerSession::Vrfy},
    {"HELP", true, &ServerSession::Help},           {"EXPN", true, &ServerSession::NotImplemented},
    {"ETRN", true, &ServerSession::NotImplemented}, {"TURN", true, &ServerSession::NotImplemented},
    {"SEND", true, &ServerSession::NotImplemented}, {"SOML", true, &ServerSession::NotImplemented},
    {"SAML", true, &ServerSession::NotImplemented},
};

ServerSession::ServerSession(const ServerOptions& options, const ServerPeer& peer, MessageSink& sink)
    : options_(options), peer_(peer), sink_(sink) {
  Say(220, "", options_.host_name + " ESMTP Quillcast mailbox");
}

void ServerSession::Receive(std::string_view bytes) {
  while (!bytes.empty() && phase_ != Phase::kClosed) {
    switch (phase_) {
      case Phase::kData:
      case Phase::kChunk:
        bytes = ReceiveContent(bytes);
        break;
      case Phase::kTls:  // clear text behind STARTTLS: somebody on the way put it in (RFC 3207 4.2)
        Close();
        break;
      default:
        bytes = ReceiveLine(bytes);
    }
  }
  if (!bytes.empty()) quit_ = false;
}

std::string_view ServerSession::ReceiveContent(std::string_view bytes) {
  const Phase phase = phase_;
  const auto rest = phase == Phase::kData ? ReceiveData(bytes) : ReceiveChunk(bytes);
  content_octets_ += bytes.size() - rest.size();
  if (phase_ != phase) ++ends_;
  return rest;
}

void ServerSession::Sent(std::size_t octets) {
  sent_ += octets;
  if (sent_ < out_.size()) return;
  out_.clear();
  sent_ = 0;
}

ServerSession::Next ServerSession::WhatNext() const {
  if (phase_ == Phase::kClosed) return Next::kClose;
  return phase_ == Phase::kTls ? Next::kStartTls : Next::kContinue;
}

void ServerSession::TlsStarted() {
  ResetTransaction();
  tls_ = true;
  helo_.clear();
  features_ = 0;
  phase_ = Phase::kCommand;
}

void ServerSession::Shutdown(std::string_view why) {
  if (phase_ == Phase::kClosed) return;
  if (phase_ != Phase::kTls) Say(421, "4.3.2", fmt::format("{} {}, closing", options_.host_name, why));
  Close();
}

// Takes one line out of the bytes, or all of them when they hold no line end.
std::string_view ServerSession::ReceiveLine(std::string_view bytes) {
  const auto* end = static_cast<const char*>(std::memchr(bytes.data(), '\n', bytes.size()));
  const std::size_t taken = end != nullptr ? static_cast<std::size_t>(end - bytes.data()) + 1 : bytes.size();
  const auto piece = bytes.substr(0, taken);
  const auto rest = bytes.substr(taken);

  const std::size_t longest = phase_ == Phase::kCommand ? kLongestCommand : kLongestAuthLine;
  if (line_.size() + piece.size() > longest) line_too_long_ = true;
  if (end == nullptr) {
    if (line_too_long_) {
      line_.clear();
    } else {
      line_ += piece;
    }
    return rest;
  }
  ++ends_;
  if (std::exchange(line_too_long_, false)) {
    line_.clear();
    phase_ = Phase::kCommand;
    Refuse({500, "5.5.2", "The line is too long"});
  } else if (line_.empty()) {
    TakeLine(piece);
  } else {
    line_ += piece;
    const std::string line = std::exchange(line_, {});
    TakeLine(line);
  }
  return rest;
}

// Only CRLF ends a line; what a lone LF ends is not obeyed, so that no two programs can read it differently.
void ServerSession::TakeLine(std::string_view line) {
  line.remove_suffix(1);
  const bool ends_in_crlf = line.ends_with('\r');
  if (ends_in_crlf) line.remove_suffix(1);
  if (phase_ == Phase::kCommand && IsOfTheWeb(line)) {
    return Say(421, "4.7.0", options_.host_name + " takes mail and nothing else, closing");
  }
  if (!ends_in_crlf || HasControls(line)) {
    phase_ = Phase::kCommand;
    Refuse({500, "5.5.2", ends_in_crlf ? "Control characters in a line" : "Lines must end in CRLF"});
  } else if (phase_ == Phase::kCommand) {
    RunCommand(line);
  } else {
    TakeAuthLine(line);
  }
}

void ServerSession::RunCommand(std::string_view line) {
  const auto [verb, argument] = SplitCommand(line);
  for (const auto& row : kCommands) {
    if (!platform::EqualsIgnoringAsciiCase(row.verb, verb)) continue;
    if (!argument.empty() && !row.takes_argument) {
      return Refuse({501, "5.5.4", fmt::format("{} takes no argument", row.verb)});
    }
    return (this->*row.run)(argument);
  }
  Refuse({500, "5.5.1", "Command not known; try HELP"});
}

bool ServerSession::Greet(std::string_view argument) {
  features_ = 0;  // the replies to the greeting have no enhanced codes (RFC 2034 4)
  if (argument.empty() || argument.find(' ') != std::string_view::npos) {
    Refuse({501, "", "Say your own name behind it"});
    return false;
  }
  ResetTransaction();
  helo_ = argument;
  return true;
}

void ServerSession::Helo(std::string_view argument) {
  if (Greet(argument)) Say(250, "", options_.host_name);
}

void ServerSession::Ehlo(std::string_view argument) {
  if (!Greet(argument)) return;
  const Features offered = Offered();
  std::string previous = options_.host_name;  // a line is written when it is known whether it is the last
  for (const auto& row : kFeatureNames) {
    if ((offered & row.feature) == 0) continue;
    out_ += "250-" + previous + "\r\n";
    previous = row.keyword;
    if (row.feature == kSize) previous += fmt::format(" {}", options_.size_limit);
    if (row.feature == kAuth) previous += " " + ServerMechanismNames(" ");
  }
  out_ += "250 " + previous + "\r\n";
  features_ = offered;
}

Features ServerSession::Offered() const {
  Features offered = options_.offer;
  if (!options_.has_certificate || tls_) offered &= ~Features{kStartTls};
  if (options_.user.empty() || AuthNeedsTls()) offered &= ~Features{kAuth};
  return offered;
}

void ServerSession::Rset(std::string_view) {
  ResetTransaction();
  Say(250, "2.0.0", "Ok");
}

void ServerSession::Noop(std::string_view) { Say(250, "2.0.0", "Ok"); }

void ServerSession::Help(std::string_view) {
  Say(214, "2.0.0", "EHLO HELO MAIL RCPT DATA BDAT RSET NOOP VRFY AUTH STARTTLS HELP QUIT");
}

void ServerSession::Vrfy(std::string_view argument) {
  if (argument.empty()) return Refuse({501, "5.5.4", "Say whom to verify"});
  Say(252, "2.0.0", "Send mail to it and see");
}

void ServerSession::Quit(std::string_view) {
  Say(221, "2.0.0", options_.host_name + " closing");
  Close();
  quit_ = true;
}

void ServerSession::NotImplemented(std::string_view) { Refuse({502, "5.5.1", "Not implemented"}); }

void ServerSession::StartTls(std::string_view) {
  if ((Offered() & kStartTls) == 0) return Refuse({502, "5.5.1", tls_ ? "TLS is on already" : "No TLS here"});
  if (helo_.empty()) return Refuse({503, "5.5.1", "Say EHLO first"});
  Say(220, "2.0.0", "Begin the TLS handshake");
  phase_ = Phase::kTls;
}

void ServerSession::Say(int code, std::string_view enhanced, std::string_view text) {
  out_ += std::to_string(code);
  out_ += ' ';
  if (!enhanced.empty() && (features_ & kEnhancedCodes) != 0) {
    out_ += enhanced;
    out_ += ' ';
  }
  out_ += text;
  out_ += "\r\n";
  if (code == 421) Close();
}

void ServerSession::Refuse(const ServerReply& reply) {
  Say(reply);
  if (++faults_ >= kMostFaults) Say(421, "4.7.0", "Too many faults, closing");
}

void ServerSession::Close() {
  DropContent();
  phase_ = Phase::kClosed;
}

}  // namespace quillcast::smtp

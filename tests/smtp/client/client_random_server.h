// A server without a socket that does what chance says at every command, and keeps account of what it took. It is
// strict about the state of its transaction, in one of the ways in which real servers are.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::smtp {

// How often, in a thousand times, a server of a kind does something; and what kind it is.
struct ServerKind {
  const char* name = "";
  bool pipelining = false;
  bool chunking = false;
  int refuse = 0;              // a command or a message, with 4xx or 5xx
  bool only_for_good = false;  // with 5xx, and never the sender: what leaves a window open
  int most = 1000;             // messages over one connection, counted by MAIL
  int code_of_limit = 452;     // 421 closes the connection
  int most_at_once = 1000;     // connections; one more is told so
  const char* says_at = "";    // at this command, or in place of the greeting
  int goodbye = 0;             // 421, and the connection closed
  int drop = 0;                // the connection closed: before a command, or after it with its reply cut
  bool data_in_vain = false;   // 354 though no recipient was taken
  bool needs_reset = false;    // after a BDAT that failed everything is 503 until RSET; else the transaction goes on
  enum class Pipelining { kKept, kRestLost, kRestRefused } kept = Pipelining::kKept;
};

// What happened to each message over all connections of a run.
struct Account {
  std::map<std::string, int> taken;     // recipient to times
  std::map<std::string, int> attempts;  // connections on which its RCPT was read
  std::map<std::string, int> refused;   // code of the last refusal of the recipient or its message
  int misdelivered = 0;                 // taken for a recipient that the message is not for
  int dropped = 0;                      // connections
  int open = 0;                         // at a time
};

class RandomServer {
 public:
  RandomServer(const ServerKind& kind, std::mt19937& chance, Account& account)
      : kind_(kind), chance_(chance), account_(account), is_one_too_many_(++account.open > kind.most_at_once) {
    IsOneTooMany("") ? SayTooMany() : Say("220 mx ESMTP");
  }
  ~RandomServer() { --account_.open; }
  RandomServer(const RandomServer&) = delete;
  RandomServer& operator=(const RandomServer&) = delete;

  bool open() const { return open_; }
  // What it says, as it comes; cut where the connection was.
  std::string& out() { return out_; }

  void Hear(std::string_view bytes) {
    in_ += bytes;
    while (open_ && (in_data_ ? HearData() : chunk_ ? HearChunk() : HearCommand())) {
    }
  }

 private:
  bool Often(int in_a_thousand) { return static_cast<int>(chance_() % 1000) < in_a_thousand; }

  void Say(const std::string& line) {
    std::string reply = line + "\r\n";
    if (line[3] == ' ' && Often(200)) reply.insert(0, line.substr(0, 3) + "-more\r\n");
    if (Often(kind_.drop)) return Drop(reply.substr(0, chance_() % reply.size()));
    out_ += reply;
  }
  void Drop(const std::string& last_words) {
    out_ += last_words;
    open_ = false;
    ++account_.dropped;
  }

  bool IsOneTooMany(std::string_view at) const { return is_one_too_many_ && at == kind_.says_at; }
  void SayTooMany() {
    Say(std::to_string(kind_.code_of_limit) + " 4.3.2 too many connections");
    open_ = kind_.code_of_limit != 421 && *kind_.says_at != '\0';
  }

  bool HearCommand() {
    const auto end = in_.find("\r\n");
    if (end == std::string::npos) return false;
    const std::string line = in_.substr(0, end);
    in_.erase(0, end + 2);
    if (Often(kind_.drop)) {
      Drop("");
      return false;
    }
    if (greeted_ && Often(kind_.goodbye)) {
      Say("421 4.3.2 closing");
      open_ = false;
      return false;
    }
    const bool more = !in_.empty() && !line.starts_with("BDAT");
    if (more && kind_.kept == ServerKind::Pipelining::kRestLost) in_.clear();
    Obey(line);
    if (more && kind_.kept == ServerKind::Pipelining::kRestRefused) {
      for (; in_.find("\r\n") != std::string::npos; in_.erase(0, in_.find("\r\n") + 2)) Say("503 5.5.0 one at a time");
    }
    return true;
  }

  void Obey(const std::string& line) {
    if (line.starts_with("EHLO")) {
      greeted_ = true;
      out_ += "250-mx\r\n250-8BITMIME\r\n";
      if (kind_.pipelining) out_ += "250-PIPELINING\r\n";
      if (kind_.chunking) out_ += "250-CHUNKING\r\n";
      return Say("250 SIZE 100000");
    }
    if (line == "QUIT") return Say("221 bye");
    if (line == "RSET") {
      Reset();
      return Say("250 reset");
    }
    if (line.starts_with("BDAT ")) return BeginChunk(line);
    if (spoilt_) return Say("503 5.5.1 RSET first");
    if (line.starts_with("MAIL FROM:")) return Mail();
    if (line.starts_with("RCPT TO:<")) return Rcpt(line.substr(9, line.find('>') - 9));
    if (line == "DATA") return Data();
    Say("500 5.5.2 what?");
  }

  void Reset() { has_sender_ = spoilt_ = false, recipients_.clear(); }

  std::string Refusal() { return !kind_.only_for_good && Often(500) ? "451 4.7.1 later" : "550 5.7.1 no"; }

  void Mail() {
    if (IsOneTooMany("MAIL")) return SayTooMany();
    if (has_sender_) return Say("503 5.5.1 nested MAIL");
    if (++mails_ > kind_.most) {
      Say(std::to_string(kind_.code_of_limit) + " 4.5.3 enough");
      open_ = kind_.code_of_limit != 421;
      return;
    }
    if (!kind_.only_for_good && Often(kind_.refuse / 4)) return Say(Refusal());
    has_sender_ = true;
    Say("250 2.1.0 sender ok");
  }

  void Rcpt(const std::string& recipient) {
    ++account_.attempts[recipient];
    if (!has_sender_) return Say("503 5.5.1 MAIL first");
    if (Often(kind_.refuse)) return Say(Refusal());
    recipients_.push_back(recipient);
    Say("250 2.1.5 recipient ok");
  }

  void Data() {
    if (!has_sender_ || (recipients_.empty() && !kind_.data_in_vain)) return Say("554 5.5.1 no valid recipients");
    if (Often(kind_.refuse / 4)) return Say(Refusal());
    in_data_ = true;
    Say("354 go on");
  }

  bool HearData() {
    const bool at_once = in_.starts_with(".\r\n");
    const auto end = at_once ? 0 : in_.find("\r\n.\r\n");
    if (end == std::string::npos) return false;
    const std::string message = at_once ? "" : in_.substr(0, end + 2);
    in_.erase(0, end + (at_once ? 3 : 5));
    in_data_ = false;
    Take(message);
    Reset();
    return true;
  }

  void BeginChunk(const std::string& line) {
    chunk_left_ = std::stoul(line.substr(5));
    chunk_ = true;
    content_.clear();
  }

  bool HearChunk() {
    const std::size_t count = std::min(chunk_left_, in_.size());
    content_ += in_.substr(0, count);
    in_.erase(0, count);
    chunk_left_ -= count;
    if (chunk_left_ > 0) return false;
    chunk_ = false;
    if (spoilt_ || !has_sender_ || recipients_.empty()) {
      spoilt_ = spoilt_ || kind_.needs_reset;
      Say("503 5.5.1 no valid recipients");
    } else if (Take(content_)) {
      Reset();
    } else {
      spoilt_ = kind_.needs_reset;
    }
    return true;
  }

  // The message names the recipient that it is for in its first line.
  bool Take(const std::string& message) {
    if (recipients_.empty()) return Say("554 5.5.1 no valid recipients"), false;
    if (Often(kind_.refuse)) return Say(Refusal()), false;
    const std::string meant = message.substr(4, message.find("\r\n") - 4);
    for (const std::string& recipient : recipients_) {
      ++account_.taken[recipient];
      if (recipient != meant) ++account_.misdelivered;
    }
    Say("250 2.0.0 taken");
    return true;
  }

  const ServerKind& kind_;
  std::mt19937& chance_;
  Account& account_;
  const bool is_one_too_many_;
  bool open_ = true;
  bool greeted_ = false;
  int mails_ = 0;
  std::string in_;
  std::string out_;
  bool has_sender_ = false;
  bool spoilt_ = false;
  std::vector<std::string> recipients_;
  bool in_data_ = false;
  bool chunk_ = false;
  std::size_t chunk_left_ = 0;
  std::string content_;
};

}  // namespace quillcast::smtp

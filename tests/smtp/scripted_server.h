// A server in a thread of the test that does to each connection what its script says, and remembers what it was told.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/file.h"

namespace quillcast::smtp {

// One accepted connection, blocking, in clear until StartTls.
class Peer {
 public:
  explicit Peer(platform::UniqueFd socket) : socket_(std::move(socket)) {}
  ~Peer() { SSL_free(tls_); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  // False when the client is gone.
  bool Say(const std::string& text) {
    if (tls_ != nullptr) return SSL_write(tls_, text.data(), static_cast<int>(text.size())) > 0;
    return ::send(socket_.get(), text.data(), text.size(), MSG_NOSIGNAL) >= 0;
  }
  // The next line without its end; empty at the end of the connection.
  std::string Line() {
    for (;;) {
      const auto end = pending_.find("\r\n");
      if (end != std::string::npos) {
        const std::string line = pending_.substr(0, end);
        pending_.erase(0, end + 2);
        return line;
      }
      if (!Fill()) return "";
    }
  }
  // So many octets, or fewer at the end of the connection.
  std::string Octets(std::size_t count) {
    while (pending_.size() < count && Fill()) {
    }
    const std::string octets = pending_.substr(0, count);
    pending_.erase(0, octets.size());
    return octets;
  }
  // Everything up to the line with the dot alone.
  std::string Message() {
    std::string message;
    for (std::string line = Line(); line != "." && !ended_; line = Line()) message += line + "\n";
    return message;
  }
  bool StartTls(SSL_CTX* context) {
    tls_ = SSL_new(context);
    SSL_set_fd(tls_, socket_.get());
    return SSL_accept(tls_) == 1;
  }
  // Waits until the client has gone, as a server that answers nothing does.
  void Stall() {
    while (Fill()) pending_.clear();
  }
  // Says no more, but hears the client out, so that what was said arrives; or neither.
  void HangUp() {
    ::shutdown(socket_.get(), SHUT_WR);
    Stall();
  }
  void Reset() {
    const linger at_once{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
  }
  bool resumed() const { return SSL_session_reused(tls_) == 1; }

 private:
  bool Fill() {
    char buffer[4096];
    const auto count = tls_ != nullptr ? SSL_read(tls_, buffer, sizeof buffer)
                                       : static_cast<int>(::recv(socket_.get(), buffer, sizeof buffer, 0));
    ended_ = count <= 0;
    if (!ended_) pending_.append(buffer, static_cast<std::size_t>(count));
    return !ended_;
  }

  platform::UniqueFd socket_;
  SSL* tls_ = nullptr;
  std::string pending_;
  bool ended_ = false;
};

// On a free port, which is given back.
inline std::uint16_t ListenOnLoopback(int listener, int most_waiting) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  EXPECT_EQ(::bind(listener, generic, length), 0);
  EXPECT_EQ(::listen(listener, most_waiting), 0);
  ::getsockname(listener, generic, &length);
  return ntohs(address.sin_port);
}

class ScriptedServer {
 public:
  // One connection after the other, or each in a thread of its own.
  enum class Serving { kInTurn, kAtOnce };

  // `serve` is called for each connection, with its number from 0; closing follows.
  explicit ScriptedServer(std::function<void(Peer&, int)> serve, Serving serving = Serving::kInTurn)
      : serve_(std::move(serve)), serving_(serving) {
    listener_ = platform::UniqueFd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    port_ = ListenOnLoopback(listener_.get(), 64);
    thread_ = std::thread([this] { Loop(); });
  }
  ~ScriptedServer() {
    stop_ = true;
    ::shutdown(listener_.get(), SHUT_RDWR);
    thread_.join();
    for (std::thread& one : servings_) one.join();
  }
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  std::uint16_t port() const { return port_; }
  int connections() const { return connections_; }

 private:
  void Loop() {
    while (!stop_) {
      pollfd ready{listener_.get(), POLLIN, 0};
      ::poll(&ready, 1, 100);
      if (ready.revents == 0 || stop_) continue;
      platform::UniqueFd socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
      if (!socket) continue;
      const int number = connections_++;
      if (serving_ == Serving::kInTurn) {
        Serve(std::move(socket), number);
      } else {
        servings_.emplace_back([this, number](platform::UniqueFd own) { Serve(std::move(own), number); },
                               std::move(socket));
      }
    }
  }
  void Serve(platform::UniqueFd socket, int number) {
    Peer peer(std::move(socket));
    serve_(peer, number);
  }

  std::function<void(Peer&, int)> serve_;
  const Serving serving_;
  platform::UniqueFd listener_;
  std::uint16_t port_ = 0;
  std::atomic<int> connections_ = 0;
  std::atomic<bool> stop_ = false;
  std::vector<std::thread> servings_;
  std::thread thread_;
};

}  // namespace quillcast::smtp

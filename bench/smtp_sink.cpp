// A mail server that takes everything and keeps nothing, as cheap as it can be, so that what is measured is the sender:
//   smtp_sink [--offer LIST] [--hold MILLISECONDS | --late MILLISECONDS] [--tls CERTIFICATE KEY]
// "--hold" keeps each direction for so long, as a line of that length would; its width has no bound. "--late" answers
// what came together so long after it came, as a server would that has to think. Prints its port, and at the end of
// each connection {"messages":N,"reads":N,"octets":N,"resumed":B}.
#include <fmt/format.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
  std::string offer = "PIPELINING,8BITMIME,CHUNKING,SIZE 0,DSN,SMTPUTF8,ENHANCEDSTATUSCODES";
  std::chrono::milliseconds hold{0};
  std::chrono::milliseconds late{0};
  SSL_CTX* tls = nullptr;
};

// Replies to what comes, without a look at what it says beyond the first letters of a command.
class Session {
 public:
  explicit Session(const Options& options) {
    for (std::string_view rest = options.offer; !rest.empty();) {
      const auto comma = rest.find(',');
      extensions_ += "250-" + std::string(rest.substr(0, comma)) + "\r\n";
      rest.remove_prefix(comma == std::string_view::npos ? rest.size() : comma + 1);
    }
    out_ = "220 sink.example ESMTP\r\n";
  }

  void Receive(std::string_view bytes) {
    octets_ += bytes.size();
    held_ += bytes;
    std::string_view rest = held_;
    while (Step(rest)) {
    }
    held_.erase(0, held_.size() - rest.size());
  }
  std::string TakeReplies() { return std::exchange(out_, {}); }
  bool ended() const { return ended_; }
  long messages() const { return messages_; }
  std::size_t octets() const { return octets_; }

 private:
  bool Step(std::string_view& rest) {
    if (chunk_ > 0) {
      const std::size_t taken = std::min(chunk_, rest.size());
      rest.remove_prefix(taken);
      chunk_ -= taken;
      if (chunk_ > 0) return false;
      messages_ += last_ ? 1 : 0;
      out_ += "250 2.0.0 Taken\r\n";
      return true;
    }
    if (data_) return StepData(rest);
    const auto end = rest.find('\n');
    if (end == std::string_view::npos) return false;
    Command(rest.substr(0, end));
    rest.remove_prefix(end + 1);
    return true;
  }

  bool StepData(std::string_view& rest) {
    constexpr std::string_view kEnd = "\r\n.\r\n";
    const auto end = rest.find(kEnd);
    if (end == std::string_view::npos) {
      if (rest.size() >= kEnd.size()) rest.remove_prefix(rest.size() - (kEnd.size() - 1));
      return false;
    }
    rest.remove_prefix(end + kEnd.size());
    data_ = false;
    ++messages_;
    out_ += "250 2.0.0 Taken\r\n";
    return true;
  }

  void Command(std::string_view line) {
    switch (line.empty() ? '\0' : line.front() & 0xDF) {
      case 'E':
        out_ += "250-sink.example\r\n" + extensions_ + "250 HELP\r\n";
        break;
      case 'D':
        out_ += "354 Go on\r\n";
        data_ = true;
        break;
      case 'B':
        chunk_ = std::strtoul(std::string(line.substr(5)).c_str(), nullptr, 10);
        last_ = line.find("LAST") != std::string_view::npos;
        if (chunk_ == 0) out_ += "250 2.0.0 Taken\r\n";
        break;
      case 'Q':
        out_ += "221 2.0.0 Bye\r\n";
        ended_ = true;
        break;
      default:
        const bool is_sender = line.starts_with("MAIL");
        out_ += is_sender ? "250 2.1.0 Ok\r\n" : line.starts_with("RCPT") ? "250 2.1.5 Ok\r\n" : "250 2.0.0 Ok\r\n";
    }
  }

  std::string extensions_;
  std::string held_;
  std::string out_;
  std::size_t chunk_ = 0;
  bool last_ = false;
  bool data_ = false;
  bool ended_ = false;
  long messages_ = 0;
  std::size_t octets_ = 0;
};

// Bytes on their way, each piece due a fixed time after it was put in.
class Line {
 public:
  explicit Line(std::chrono::milliseconds length) : length_(length) {}
  void Put(std::string bytes) {
    const std::lock_guard lock(mutex_);
    pieces_.push_back({Clock::now() + length_, std::move(bytes)});
    changed_.notify_one();
  }
  // Empty when the other end has hung up.
  std::string Take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return !pieces_.empty(); });
    const auto due = pieces_.front().due;
    lock.unlock();
    std::this_thread::sleep_until(due);
    lock.lock();
    std::string bytes = std::move(pieces_.front().bytes);
    pieces_.pop_front();
    return bytes;
  }

 private:
  struct Piece {
    Clock::time_point due;
    std::string bytes;
  };
  std::chrono::milliseconds length_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Piece> pieces_;
};

bool SendAll(int fd, SSL* tls, std::string_view bytes) {
  while (!bytes.empty()) {
    const long sent = tls != nullptr ? SSL_write(tls, bytes.data(), static_cast<int>(bytes.size()))
                                     : ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

void Tell(const Session& session, long reads, bool resumed) {
  fmt::print("{{\"messages\":{},\"reads\":{},\"octets\":{},\"resumed\":{}}}\n", session.messages(), reads,
             session.octets(), resumed);
  std::fflush(stdout);
}

void ServeAtOnce(int fd, const Options& options) {
  SSL* tls = nullptr;
  if (options.tls != nullptr) {
    tls = SSL_new(options.tls);
    SSL_set_fd(tls, fd);
    if (SSL_accept(tls) != 1) return;
  }
  Session session(options);
  std::vector<char> buffer(256UL * 1024);
  long reads = 0;
  for (bool going = SendAll(fd, tls, session.TakeReplies()); going && !session.ended();) {
    const long got = tls != nullptr ? SSL_read(tls, buffer.data(), static_cast<int>(buffer.size()))
                                    : ::recv(fd, buffer.data(), buffer.size(), 0);
    if (got <= 0) break;
    ++reads;
    session.Receive({buffer.data(), static_cast<std::size_t>(got)});
    const std::string replies = session.TakeReplies();
    if (!replies.empty()) std::this_thread::sleep_for(options.late);
    going = SendAll(fd, tls, replies);
  }
  Tell(session, reads, tls != nullptr && SSL_session_reused(tls) == 1);
  if (tls != nullptr) SSL_free(tls);
}

void ServeFromAfar(int fd, const Options& options) {
  Line to_us(options.hold);
  Line from_us(options.hold);
  long reads = 0;
  std::thread reader([&] {
    std::vector<char> buffer(256UL * 1024);
    for (;;) {
      const ssize_t got = ::recv(fd, buffer.data(), buffer.size(), 0);
      to_us.Put(std::string(buffer.data(), got > 0 ? static_cast<std::size_t>(got) : 0));
      if (got <= 0) return;
      ++reads;
    }
  });
  std::thread writer([&] {
    for (auto bytes = from_us.Take(); !bytes.empty(); bytes = from_us.Take()) {
      if (!SendAll(fd, nullptr, bytes)) return;
    }
    ::shutdown(fd, SHUT_RDWR);
  });
  Session session(options);
  from_us.Put(session.TakeReplies());
  while (!session.ended()) {
    const std::string bytes = to_us.Take();
    if (bytes.empty()) break;
    session.Receive(bytes);
    if (std::string replies = session.TakeReplies(); !replies.empty()) from_us.Put(std::move(replies));
  }
  from_us.Put({});
  writer.join();
  reader.join();
  Tell(session, reads, false);
}

SSL_CTX* LoadTls(const char* certificate, const char* key) {
  SSL_CTX* context = SSL_CTX_new(TLS_server_method());
  if (SSL_CTX_use_certificate_chain_file(context, certificate) != 1 ||
      SSL_CTX_use_PrivateKey_file(context, key, SSL_FILETYPE_PEM) != 1) {
    fmt::print(stderr, "{} and {} are no certificate and its key.\n", certificate, key);
    std::exit(65);
  }
  return context;
}

Options OptionsFrom(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string_view name = argv[i];
    if (name == "--offer" && i + 1 < argc) options.offer = argv[++i];
    if (name == "--hold" && i + 1 < argc) options.hold = std::chrono::milliseconds(std::atoi(argv[++i]));
    if (name == "--late" && i + 1 < argc) options.late = std::chrono::milliseconds(std::atoi(argv[++i]));
    if (name == "--tls" && i + 2 < argc) {
      options.tls = LoadTls(argv[i + 1], argv[i + 2]);
      i += 2;
    }
  }
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  const Options options = OptionsFrom(argc, argv);
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 || ::listen(listener, 64) != 0 ||
      ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    std::perror("smtp_sink");
    return 69;
  }
  fmt::print("{}\n", ntohs(address.sin_port));
  std::fflush(stdout);
  for (;;) {
    const int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) continue;
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    std::thread([fd, &options] {
      options.hold.count() > 0 ? ServeFromAfar(fd, options) : ServeAtOnce(fd, options);
      ::close(fd);
    }).detach();
  }
}

// TLS over a socket that takes little at a time: what counts as out, and that all of it comes.
#include "net/tls_socket.h"

#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "net/stream.h"
#include "smtp/certificates.h"

namespace quillcast::net {
namespace {

using smtp::Certificate;

struct Pair {
  Pair() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    ours = platform::UniqueFd(ends[0]);
    theirs = platform::UniqueFd(ends[1]);
    const int small = 4096;
    EXPECT_EQ(::setsockopt(ends[0], SOL_SOCKET, SO_SNDBUF, &small, sizeof small), 0);
  }
  platform::UniqueFd ours;
  platform::UniqueFd theirs;
};

TEST(TlsSocket, CountsTheBytesOfWholeRecordsAlone) {
  Pair pair;
  TlsSocket socket(pair.ours.get());
  socket.Gather();
  constexpr std::size_t kRecord = 3000;
  constexpr std::size_t kCarried = 2978;
  for (int n = 0; n < 20; ++n) {
    const std::string record(kRecord, static_cast<char>('a' + n));
    ASSERT_EQ(socket.Write(record.data(), record.size()), static_cast<ssize_t>(record.size()));
    socket.Carry(kCarried);
  }
  std::size_t out = 0;
  std::string came;
  int in_part = 0;
  while (!socket.empty()) {
    ASSERT_TRUE(socket.carries());
    const bool sent = socket.Send(out);
    std::array<char, 1700> buffer{};
    if (!sent) {
      const ssize_t count = ::recv(pair.theirs.get(), buffer.data(), buffer.size(), 0);
      ASSERT_GT(count, 0);
      came.append(buffer.data(), static_cast<std::size_t>(count));
    }
    int waiting = 0;
    ASSERT_EQ(::ioctl(pair.theirs.get(), FIONREAD, &waiting), 0);
    const std::size_t taken = came.size() + static_cast<std::size_t>(waiting);
    in_part += taken % kRecord != 0 ? 1 : 0;
    EXPECT_EQ(out, taken / kRecord * kCarried);
  }
  EXPECT_EQ(out, 20 * kCarried);
  EXPECT_FALSE(socket.carries());
  EXPECT_GT(in_part, 0) << "it was taken whole";
}

// What a server of the name localhost shows, and who believes it.
struct Trust {
  Trust()
      : authority(smtp::Make("Test Authority", "", nullptr, -smtp::kHour, smtp::kHour)),
        certificate(smtp::Make("localhost", "DNS:localhost", &authority, -smtp::kHour, smtp::kHour)),
        file(std::filesystem::path(testing::TempDir()) / ("authority-" + std::to_string(::getpid()) + ".pem")) {
    std::FILE* out = std::fopen(file.c_str(), "w");
    PEM_write_X509(out, authority.certificate);
    std::fclose(out);
    context = *TlsContext::ForClient(file);
  }
  ~Trust() {
    smtp::Free(certificate);
    smtp::Free(authority);
    std::filesystem::remove(file);
  }
  Trust(const Trust&) = delete;
  Trust& operator=(const Trust&) = delete;

  Certificate authority;
  Certificate certificate;
  std::filesystem::path file;
  std::unique_ptr<TlsContext> context;
};

// The other side of a connection, on a thread of its own.
class Peer {
 public:
  Peer(int socket, const Trust& trust, int version, std::function<void(SSL*)> talk)
      : context_(smtp::ServerContext(trust.certificate)) {
    std::signal(SIGPIPE, SIG_IGN);
    SSL_CTX_set_min_proto_version(context_.get(), version);
    SSL_CTX_set_max_proto_version(context_.get(), version);
    thread_ = std::thread([this, socket, talk = std::move(talk)] {
      SSL* tls = SSL_new(context_.get());
      SSL_set_fd(tls, socket);
      EXPECT_EQ(SSL_accept(tls), 1);
      talk(tls);
      SSL_free(tls);
    });
  }
  ~Peer() { End(); }
  void End() {
    if (thread_.joinable()) thread_.join();
  }

 private:
  smtp::Context context_;
  std::thread thread_;
};

// Until something of what it waits for is there.
bool Waits(const Stream& stream, bool to_write) {
  pollfd wanted = stream.WaitsFor(to_write);
  const bool goes_on = ::poll(&wanted, 1, 5000) == 1;
  EXPECT_TRUE(goes_on) << "neither side goes on";
  return goes_on;
}

bool Encrypt(Stream& stream, Trust& trust) {
  if (!stream.BeginTls(*trust.context, "localhost")) return false;
  auto done = stream.ShakeHands();
  while (done && !*done && Waits(stream, false)) done = stream.ShakeHands();
  return done && *done;
}

// Reads until the end; what it returns is how that came.
int ReadToTheEnd(SSL* tls, std::string& came, const std::function<void(int)>& meanwhile = {}) {
  std::array<char, 5000> buffer{};
  for (int n = 0;; ++n) {
    const int count = SSL_read(tls, buffer.data(), static_cast<int>(buffer.size()));
    if (count <= 0) return SSL_get_error(tls, count);
    came.append(buffer.data(), static_cast<std::size_t>(count));
    if (meanwhile) meanwhile(n);
  }
}

constexpr std::array kVersions{TLS1_2_VERSION, TLS1_3_VERSION};

TEST(TlsStream, AllOfItComesHoweverLittleIsTakenAtATime) {
  Trust trust;
  for (const int version : kVersions) {
    SCOPED_TRACE(version);
    Pair pair;
    std::string came;
    // It asks for new keys or another handshake meanwhile.
    Peer peer(pair.theirs.get(), trust, version, [&](SSL* tls) {
      const int end = ReadToTheEnd(tls, came, [&](int n) {
        if (n % 50 != 10) return;
        const bool asked =
            version == TLS1_3_VERSION ? SSL_key_update(tls, SSL_KEY_UPDATE_REQUESTED) == 1 : SSL_renegotiate(tls) == 1;
        EXPECT_TRUE(asked);
        EXPECT_EQ(SSL_do_handshake(tls), 1);
        EXPECT_EQ(SSL_write(tls, "250 OK\r\n", 8), 8);
      });
      EXPECT_EQ(end, SSL_ERROR_ZERO_RETURN) << "no goodbye";
    });
    Stream stream(std::move(pair.ours));
    ASSERT_TRUE(Encrypt(stream, trust));
    std::string text;
    for (int n = 0; text.size() < 3'000'000; ++n) text += std::to_string(n) + "\r\n";
    std::string_view left = text;
    std::size_t heard = 0;
    std::array<char, 100> buffer{};
    while (!left.empty()) {
      const auto sent = stream.WriteNow(left);
      ASSERT_TRUE(sent);
      left.remove_prefix(sent->value_or(0));
      const auto got = stream.ReadNow(buffer);
      ASSERT_TRUE(got);
      heard += got->value_or(0);
      if (!*sent && !*got && !Waits(stream, true)) break;
    }
    stream.Close();
    peer.End();
    EXPECT_EQ(came.size(), text.size());
    EXPECT_TRUE(came == text);
    EXPECT_GT(heard, 0u);
  }
}

TEST(TlsStream, AnswersAnotherHandshakeAlthoughItHasNothingToSay) {
  Trust trust;
  for (const int times : {1, 2, 5}) {
    SCOPED_TRACE(times);
    Pair pair;
    std::promise<void> is_asked;
    std::string came;
    Peer peer(pair.theirs.get(), trust, TLS1_2_VERSION, [&](SSL* tls) {
      SSL_clear_mode(tls, SSL_MODE_AUTO_RETRY);
      for (int n = 0; n < times; ++n) {
        EXPECT_EQ(SSL_renegotiate(tls), 1);
        EXPECT_EQ(SSL_do_handshake(tls), 1);
      }
      EXPECT_EQ(SSL_write(tls, "ask", 3), 3);
      is_asked.set_value();
      char none = 0;
      while (SSL_renegotiate_pending(tls) || SSL_in_init(tls)) {
        const int count = SSL_read(tls, &none, 1);
        if (count <= 0 && SSL_get_error(tls, count) != SSL_ERROR_WANT_READ) return;
      }
      EXPECT_EQ(SSL_write(tls, "done", 4), 4);
      SSL_set_mode(tls, SSL_MODE_AUTO_RETRY);
      ReadToTheEnd(tls, came);
    });
    Stream stream(std::move(pair.ours));
    ASSERT_TRUE(Encrypt(stream, trust));
    is_asked.get_future().wait();
    std::string heard;
    std::array<char, 100> buffer{};
    for (int n = 0; n < 100 && heard != "askdone"; ++n) {
      const auto got = stream.ReadNow(buffer);
      if (!got || (!*got && !Waits(stream, false))) break;
      heard.append(buffer.data(), got->value_or(0));
    }
    EXPECT_EQ(heard, "askdone");
    auto sent = stream.WriteNow("MAIL");
    for (int n = 0; n < 100 && sent && !*sent && Waits(stream, true); ++n) {
      if (!stream.ReadNow(buffer)) break;
      sent = stream.WriteNow("MAIL");
    }
    stream.Close();
    peer.End();
    EXPECT_EQ(came, "MAIL");
  }
}

Result<std::optional<std::size_t>> ReadWithin(Stream& stream, std::span<char> buffer, std::chrono::milliseconds time) {
  const platform::SystemClock clock;
  const platform::CancelToken cancel;
  return stream.Read(buffer, false, {clock, cancel, platform::Stop::kStop, Deadline::After(clock.Monotonic(), time)});
}

TEST(TlsStream, WaitsForTheRestOfARecordAndNoLongerThanItMay) {
  Trust trust;
  for (const int version : kVersions) {
    SCOPED_TRACE(version);
    Pair pair;
    Peer peer(pair.theirs.get(), trust, version, [](SSL* tls) {
      EXPECT_EQ(SSL_write(tls, "250 ok\r\n", 8), 8);
      EXPECT_EQ(::send(SSL_get_fd(tls), "\x17\x03\x03", 3, MSG_NOSIGNAL), 3);
      std::string came;
      ReadToTheEnd(tls, came);
    });
    Stream stream(std::move(pair.ours));
    ASSERT_TRUE(Encrypt(stream, trust));
    std::array<char, 100> buffer{};
    std::optional<std::size_t> heard;
    for (int n = 0; n < 20 && !heard; ++n) {  // what TLS has to say of itself comes before
      const auto got = ReadWithin(stream, buffer, std::chrono::seconds(5));
      ASSERT_TRUE(got);
      heard = *got;
    }
    EXPECT_EQ(heard, 8U);
    for (int n = 0; n < 2; ++n) {  // the first may take what is there
      const auto got = ReadWithin(stream, buffer, std::chrono::milliseconds(100));
      if (n == 0 && got && !*got) continue;
      ASSERT_FALSE(got) << "it does not wait";
      EXPECT_EQ(got.error().failure, Failure::kTimedOut);
    }
    stream.Close();
  }
}

TEST(TlsStream, ReadsALittleAtATimeWhereNothingButNewKeysCome) {
  Trust trust;
  Pair pair;
  std::promise<void> are_sent;
  Peer peer(pair.theirs.get(), trust, TLS1_3_VERSION, [&](SSL* tls) {
    BIO* memory = BIO_new(BIO_s_mem());
    SSL_set0_wbio(tls, memory);
    for (int n = 0; n < 5000; ++n) {
      EXPECT_EQ(SSL_key_update(tls, SSL_KEY_UPDATE_NOT_REQUESTED), 1);
      EXPECT_EQ(SSL_do_handshake(tls), 1);
    }
    char* keys = nullptr;
    const long size = BIO_get_mem_data(memory, &keys);
    EXPECT_EQ(::send(SSL_get_rfd(tls), keys, static_cast<std::size_t>(size), MSG_NOSIGNAL), size);
    are_sent.set_value();
    std::string came;
    ReadToTheEnd(tls, came);
  });
  const int socket = pair.ours.get();
  Stream stream(std::move(pair.ours));
  ASSERT_TRUE(Encrypt(stream, trust));
  are_sent.get_future().wait();
  std::array<char, 100> buffer{};
  int calls = 0;
  for (int left = 1; left > 0 && calls < 100; ++calls) {
    const auto got = stream.ReadNow(buffer);
    ASSERT_TRUE(got && !*got);
    ASSERT_EQ(::ioctl(socket, FIONREAD, &left), 0);
  }
  EXPECT_GE(calls, 2);
  EXPECT_LT(calls, 100);
}

TEST(TlsStream, GivesWhatCameTogetherWithoutWaitingForMore) {
  Trust trust;
  for (const int version : kVersions) {
    SCOPED_TRACE(version);
    Pair pair;
    std::promise<void> is_written;
    Peer peer(pair.theirs.get(), trust, version, [&](SSL* tls) {
      for (const std::string_view reply : {"250 one\r\n", "250 two\r\n", "250 three\r\n"})
        EXPECT_EQ(SSL_write(tls, reply.data(), static_cast<int>(reply.size())), static_cast<int>(reply.size()));
      is_written.set_value();
      std::string came;
      ReadToTheEnd(tls, came);
    });
    Stream stream(std::move(pair.ours));
    ASSERT_TRUE(Encrypt(stream, trust));
    is_written.get_future().wait();
    std::string heard;
    while (heard.size() < 29) {
      std::array<char, 100> buffer{};
      const auto got = ReadWithin(stream, buffer, std::chrono::seconds(5));
      ASSERT_TRUE(got) << "it has " << heard;
      heard.append(buffer.data(), got->value_or(0));
    }
    EXPECT_EQ(heard, "250 one\r\n250 two\r\n250 three\r\n");
    stream.Close();
  }
}

}  // namespace
}  // namespace quillcast::net

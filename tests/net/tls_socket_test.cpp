// TLS over a socket that takes little at a time: what counts as out, and that all of it comes.
#include "net/tls_socket.h"

#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <filesystem>
#include <fstream>
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

// The other side of a connection, which reads little at a time, and asks for new keys or another handshake meanwhile.
struct Reader {
  Reader(int socket, const Certificate& certificate, int version) : context(smtp::ServerContext(certificate)) {
    SSL_CTX_set_min_proto_version(context.get(), version);
    SSL_CTX_set_max_proto_version(context.get(), version);
    thread = std::thread([this, socket] { Read(socket); });
  }
  ~Reader() { End(); }
  void End() {
    if (thread.joinable()) thread.join();
  }
  void Read(int socket) {
    SSL* tls = SSL_new(context.get());
    SSL_set_fd(tls, socket);
    ASSERT_EQ(SSL_accept(tls), 1);
    std::array<char, 5000> buffer{};
    for (int n = 0;; ++n) {
      const int count = SSL_read(tls, buffer.data(), static_cast<int>(buffer.size()));
      if (count <= 0) break;
      came.append(buffer.data(), static_cast<std::size_t>(count));
      if (n % 50 == 10) Meddle(tls);
    }
    EXPECT_EQ(SSL_get_shutdown(tls) & SSL_RECEIVED_SHUTDOWN, SSL_RECEIVED_SHUTDOWN) << "no goodbye";
    SSL_free(tls);
  }
  void Meddle(SSL* tls) {
    if (SSL_version(tls) == TLS1_3_VERSION) {
      EXPECT_EQ(SSL_key_update(tls, SSL_KEY_UPDATE_REQUESTED), 1);
    } else {
      EXPECT_EQ(SSL_renegotiate(tls), 1);
    }
    EXPECT_EQ(SSL_do_handshake(tls), 1);
    EXPECT_EQ(SSL_write(tls, "250 OK\r\n", 8), 8);
  }

  smtp::Context context;
  std::string came;
  std::thread thread;
};

TEST(TlsStream, AllOfItComesHoweverLittleIsTakenAtATime) {
  Certificate authority = smtp::Make("Test Authority", "", nullptr, -smtp::kHour, smtp::kHour);
  Certificate certificate = smtp::Make("localhost", "DNS:localhost", &authority, -smtp::kHour, smtp::kHour);
  const auto file = std::filesystem::path(testing::TempDir()) / ("authority-" + std::to_string(::getpid()) + ".pem");
  std::FILE* out = std::fopen(file.c_str(), "w");
  PEM_write_X509(out, authority.certificate);
  std::fclose(out);
  auto context = *TlsContext::ForClient(file);
  for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
    SCOPED_TRACE(version);
    Pair pair;
    Reader reader(pair.theirs.get(), certificate, version);
    Stream stream(std::move(pair.ours));
    ASSERT_TRUE(stream.BeginTls(*context, "localhost"));
    const auto wait = [&](bool to_write) {
      pollfd wanted = stream.WaitsFor(to_write);
      ASSERT_EQ(::poll(&wanted, 1, 5000), 1) << "neither side goes on";
    };
    for (auto done = stream.ShakeHands(); !*done; done = stream.ShakeHands()) wait(false);
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
      if (!*sent && !*got) wait(true);
    }
    stream.Close();
    reader.End();
    EXPECT_EQ(reader.came.size(), text.size());
    EXPECT_TRUE(reader.came == text);
    EXPECT_GT(heard, 0u);
  }
  smtp::Free(certificate);
  smtp::Free(authority);
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace quillcast::net

#include "smtp/mailbox/mailbox_rig.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace quillcast::smtp {

TestFolder::TestFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "mailbox-test-XXXXXX").string();
  path_ = ::mkdtemp(name.data());
}

TestFolder::~TestFolder() { std::filesystem::remove_all(path_); }

TestMailbox::TestMailbox(MailboxOptions options) {
  auto mailbox = RunningMailbox::Start(std::move(options), clock_);
  if (!mailbox) ADD_FAILURE() << Describe(mailbox.error());
  mailbox_ = std::move(*mailbox);
}

TestClient::TestClient(std::string_view address) {
  const auto colon = address.rfind(':');
  const auto port = htons(static_cast<std::uint16_t>(std::stoi(std::string(address.substr(colon + 1)))));
  sockaddr_in v4{AF_INET, port, {htonl(INADDR_LOOPBACK)}, {}};
  sockaddr_in6 v6{AF_INET6, port, 0, in6addr_loopback, 0};
  const bool is_v6 = address.starts_with('[');
  fd_ = ::socket(is_v6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const timeval limit{10, 0};
  ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  const auto* to = is_v6 ? reinterpret_cast<const sockaddr*>(&v6) : reinterpret_cast<const sockaddr*>(&v4);
  EXPECT_EQ(::connect(fd_, to, is_v6 ? sizeof v6 : sizeof v4), 0);
}

TestClient::~TestClient() { ::close(fd_); }

void TestClient::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

std::string TestClient::ReadLine() {
  char block[4096];
  while (received_.find('\n') == std::string::npos) {
    const ssize_t got = ::recv(fd_, block, sizeof block, 0);
    if (got <= 0) return {};
    received_.append(block, static_cast<std::size_t>(got));
  }
  const auto end = received_.find('\n') + 1;
  const std::string line = received_.substr(0, end);
  received_.erase(0, end);
  return line;
}

std::string TestClient::Reply() {
  std::string reply;
  std::string line;
  do {
    line = ReadLine();
    reply += line;
  } while (line.size() > 3 && line[3] == '-');
  return reply.empty() ? reply : reply.substr(0, reply.size() - 2);
}

std::string TestClient::Say(std::string_view line) {
  Send(std::string(line) + "\r\n");
  return Reply();
}

std::string TestClient::Deliver(std::string_view recipient, std::string_view content) {
  Send("MAIL FROM:<ada@example.org>\r\nRCPT TO:" + std::string(recipient) + "\r\nDATA\r\n");
  Reply();
  Reply();
  Reply();
  Send(content);
  return Say("\r\n.");
}

std::string ReadAll(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

std::vector<std::string> NamesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace quillcast::smtp

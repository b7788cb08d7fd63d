// What a client tells while it tries servers, written down of each apart.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "domain/connection/connection_test.h"
#include "platform/clock.h"
#include "smtp/client/client.h"
#include "smtp/client/connection_watch.h"

namespace quillcast::domain {

// Tells another outcome of a test.
void Retell(ConnectionTest& test, smtp::Outcome outcome);

class ConnectionRecord final : public smtp::JobSource, public smtp::ConnectionWatch {
 public:
  explicit ConnectionRecord(const platform::Clock& clock) : clock_(clock) {}

  // The test of the server that is told, with the outcome of the whole, and beside it the others.
  ConnectionTest Finish(smtp::Outcome outcome);
  std::size_t tries() const { return tries_.size(); }

  smtp::Job* NextJob() override { return nullptr; }
  void Finished(smtp::Job&, const smtp::Outcome&) override {}
  void Progress(std::uint64_t, std::uint64_t) override {}
  void LogLine(std::string_view line) override;

  void Begins(const smtp::Server& server) override;
  void Failed(const smtp::Outcome& outcome) override { tries_.back().test.outcome = outcome; }
  void Told(std::size_t server) override { told_ = server; }
  void Begins(smtp::ConnectionStep step) override;
  void Tried(std::span<const net::TriedAddress> addresses) override;
  void Encrypted(const net::TlsFacts& facts) override { Now().tls = facts; }
  void Offered(std::string_view text) override;
  void NotFound(net::NameFault fault) override { Now().name_fault = fault; }
  void Senseless(std::string_view bytes) override;
  void Unfinished(std::string_view bytes) override;
  void InClear(std::string_view bytes) override;

 private:
  struct Try {
    ConnectionTest test;
    std::string conversation;
    std::size_t lines = 0;
  };

  ConnectionTest& Now() { return tries_.back().test; }
  void EndStep();
  void Write(std::string_view line);
  void WriteOfServer(std::string_view bytes);

  const platform::Clock& clock_;
  std::optional<platform::Instant> began_;  // the step that is under way
  std::vector<Try> tries_;                  // one for each server; the first call is that one begins
  std::optional<std::size_t> told_;
};

}  // namespace quillcast::domain

// What a person names to have a connection tested, checked and made into what a client takes.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "platform/complaint.h"
#include "platform/result.h"
#include "smtp/client/client_options.h"

namespace quillcast::domain {

enum class TestControl { kServer, kPort };
using TestComplaint = Complaint<TestControl>;

// What is wrong first with the server and port that a person names. A port that is none has no message of its own.
std::optional<TestComplaint> CheckTest(std::string_view server, std::string_view port);

// The connection that they describe, as the account reads them: several servers are parted by semicolons.
// `security` is one of the account's choices. Each step may take `patience`, and all of a test twice as long.
Result<smtp::ClientOptions> TestOptions(std::string_view server, std::string_view port, std::string_view security,
                                        std::chrono::seconds patience = std::chrono::seconds(30));

}  // namespace quillcast::domain

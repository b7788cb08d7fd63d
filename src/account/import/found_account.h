// A mail account that another program on this machine keeps.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/sentence.h"

namespace quillcast::account {

// UTF-8 without control characters, none longer than kLongestText. What is not known is empty.
struct FoundAccount {
  std::string account_name = {};  // as its program lists it; may be empty
  std::string name = {};          // the sender's
  std::string email = {};
  std::string server = {};
  std::string port = {};      // a whole number from 1 to 65535
  std::string security = {};  // one of the choices of our own key
  std::string user_name = {};
  std::string_view program = {};    // "Thunderbird"
  std::filesystem::path file = {};  // that it stands in
};

// What a person ought to be told beside them, each once: a file that could not be read, accounts that were left out.
struct FoundAccounts {
  std::vector<FoundAccount> accounts;
  std::vector<Sentence> passed_over;
  std::int64_t also_passed_over = 0;  // beyond the first kMostTold
};

// Bytes. As much as a value of the store that such accounts were first read from could have.
inline constexpr std::size_t kLongestText = 255;
inline constexpr std::size_t kMostAccounts = 100'000;
inline constexpr std::size_t kMostTold = 50;

}  // namespace quillcast::account

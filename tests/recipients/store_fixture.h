// A folder of its own for each test, with an empty recipient store in it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/file.h"
#include "recipients/recipient_store.h"
#include "recipients/store_connection.h"

namespace quillcast::recipients {

class StoreTest : public testing::Test {
 protected:
  StoreTest() {
    std::string name = testing::TempDir() + "recipients.XXXXXX";
    folder_ = std::filesystem::path(::mkdtemp(name.data())) / "";
    const auto schema = platform::ReadFile(std::string(QUILLCAST_TEST_DATA) + "/../../data/group_schema.sql", 1 << 20);
    EXPECT_TRUE(schema);
    EXPECT_TRUE(CreateStoreFile(folder_ / "Group.mdb", *schema));
  }
  ~StoreTest() override { std::filesystem::remove_all(folder_); }

  std::int64_t NewGroup(const char* name) {
    EXPECT_TRUE(*store().CreateGroupIfFree(name));
    return store().RequireGroup(name)->id;
  }
  void Add(std::int64_t group, std::string_view address) {
    Recipient recipient;
    recipient.values[kEmail] = address;
    EXPECT_TRUE(*store().AddRecipientIfNew(group, recipient)) << address;
  }
  // "n1@x.org", "n2@x.org", ... with the first name "ada".
  void Fill(std::int64_t group, int count) {
    const std::string sql = "WITH RECURSIVE [n](x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM [n] WHERE x < " +
                            std::to_string(count) +
                            ") INSERT INTO [Emails] ([G-ID], [G-Email], [G-FirstName]) SELECT " +
                            std::to_string(group) + ", 'n' || x || '@x.org', 'ada' FROM [n]";
    EXPECT_TRUE(OpenStore(store().file())->Execute(sql.c_str()));
  }
  std::filesystem::path NewFile(const char* name, std::string_view content) {
    std::ofstream(folder_ / name, std::ios::binary) << content;
    return folder_ / name;
  }
  // The addresses of a group, one after the other, each with a blank behind it.
  std::string Addresses(std::int64_t group, std::string_view sort = {}, Reading reading = Reading::kLive) {
    auto cursor = store().ListRecipients(group, sort, reading);
    if (!cursor) return "failed";
    std::string all;
    Recipient recipient;
    while (*cursor->Next(recipient)) all += recipient.email() + " ";
    return all;
  }
  RecipientStore store() const { return RecipientStore(folder_ / "Group.mdb"); }

  std::filesystem::path folder_;
};

inline Recipient Named(std::string_view email, std::string_view first_name = {}, std::string_view city = {}) {
  Recipient recipient;
  recipient.values[kEmail] = email;
  recipient.values[kFirstName] = first_name;
  recipient.values[FieldOfLabel("City")] = city;
  return recipient;
}

inline std::string FileText(const std::filesystem::path& path) {
  const auto text = platform::ReadFile(path, 1 << 26);
  return text ? *text : "cannot be read";
}

}  // namespace quillcast::recipients

#include "help/about_program.h"

#include <ares.h>
#include <curl/curl.h>
#include <fmt/format.h>
#include <gmime/gmime-version.h>
#include <libpsl.h>
#include <openssl/crypto.h>
#include <sqlite3.h>
#include <sys/utsname.h>
#include <unicode/uversion.h>
#include <zlib.h>

#include <array>
#include <nlohmann/json.hpp>

#include "platform/locale_codeset.h"
#include "platform/system_name.h"
#include "profile/startup.h"
#include "profile/version.h"

namespace quillcast::help {
namespace {

std::string Numbers(int major, int minor, int patch) { return fmt::format("{}.{}.{}", major, minor, patch); }

std::string IcuVersion() {
  UVersionInfo version;
  std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
  u_getVersion(version);
  u_versionToString(version, text.data());
  return text.data();
}

std::string WithoutLinks(const std::filesystem::path& folder) {
  std::error_code failed;
  const auto whole = std::filesystem::weakly_canonical(folder, failed);
  return (failed ? folder.lexically_normal() : whole).string();
}

// "~/.local/share": the name of the person who sits there is nobody's business, however the home folder is written.
std::string Shortened(const std::filesystem::path& folder, const std::string& home) {
  const std::string text = WithoutLinks(folder);
  const bool is_below = !home.empty() && (text == home || text.starts_with(home + '/'));
  return is_below ? '~' + text.substr(home.size()) : folder.string();
}

std::string KernelName() {
  utsname names{};
  if (::uname(&names) != 0) return {};
  return fmt::format("{} {} {}", names.sysname, names.release, names.machine);
}

}  // namespace

std::vector<Library> Libraries() {
  return {
      {"SQLite", sqlite3_libversion(), "blessing", "sqlite3"},
      {"OpenSSL", OpenSSL_version(OPENSSL_VERSION_STRING), "Apache-2.0", "openssl"},
      {"c-ares", ares_version(nullptr), "MIT", "libcares"},
      {"ICU", IcuVersion(), "Unicode-DFS-2016", "icu-uc"},
      {"zlib", zlibVersion(), "Zlib", "zlib"},
      {"GMime", Numbers(GMIME_MAJOR_VERSION, GMIME_MINOR_VERSION, GMIME_MICRO_VERSION), "LGPL-2.1-or-later",
       "gmime-3.0"},
      {"libpsl", psl_get_version(), "MIT", "libpsl"},
      {"libcurl", curl_version_info(CURLVERSION_NOW)->version, "curl", "libcurl"},
      {"libsystemd", QUILLCAST_SYSTEMD_VERSION, "LGPL-2.1-or-later", "libsystemd"},
      {"libsecret", QUILLCAST_SECRET_VERSION, "LGPL-2.1-or-later", "libsecret-1"},
      {"{fmt}", Numbers(FMT_VERSION / 10000, FMT_VERSION / 100 % 100, FMT_VERSION % 100), "MIT", ""},
      {"JSON for Modern C++",
       Numbers(NLOHMANN_JSON_VERSION_MAJOR, NLOHMANN_JSON_VERSION_MINOR, NLOHMANN_JSON_VERSION_PATCH), "MIT", ""},
  };
}

std::vector<Fact> SystemFacts(const profile::Folders& folders, const platform::Environment& environment) {
  std::string home = WithoutLinks(environment.Get("HOME").value_or(""));
  while (home.ends_with('/')) home.pop_back();
  std::vector<Fact> facts = {{"Program", NameWithVersion()},
                             {"System", platform::SystemName()},
                             {"Kernel", KernelName()},
                             {"Language", environment.Get("LC_ALL").value_or(environment.Get("LANG").value_or("C"))},
                             {"Character set", platform::LocaleCodeset()}};
  const auto desktop = environment.Get("XDG_CURRENT_DESKTOP");
  const auto session = environment.Get("XDG_SESSION_TYPE");
  if (desktop) facts.push_back({"Desktop", *desktop});
  if (session) facts.push_back({"Session", *session});
  facts.push_back({"Installed in", Shortened(folders.program, home)});
  facts.push_back({"Data folder", Shortened(folders.data, home)});
  facts.push_back({"Settings", Shortened(folders.settings, home)});
  facts.push_back({"Temporary folder", Shortened(folders.temporary, home)});
  return facts;
}

std::string NameWithVersion() {
  return fmt::format("{} {}.{}", profile::kWindowTitle, profile::kVersionMajor, profile::kVersionMinor);
}

std::string AsText(const std::vector<Fact>& facts, const std::vector<Library>& libraries) {
  std::string text;
  for (const Fact& fact : facts) text += fmt::format("{}: {}\n", fact.what.InEnglish(), fact.value);
  text += "\nStands on\n";
  for (const Library& library : libraries)
    text += fmt::format("{} {} ({})\n", library.name, library.version, library.licence);
  return text;
}

}  // namespace quillcast::help

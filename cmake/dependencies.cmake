# The libraries the core stands on, all from the distribution. A missing one names its package.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

function(quillcast_require target module package)
  pkg_check_modules(${target} QUIET IMPORTED_TARGET GLOBAL ${module})
  if(NOT ${target}_FOUND)
    message(FATAL_ERROR "${module} was not found. Install it with: apt-get install ${package}")
  endif()
endfunction()

quillcast_require(SQLITE sqlite3 libsqlite3-dev)
quillcast_require(OPENSSL openssl libssl-dev)
quillcast_require(CARES libcares libc-ares-dev)
quillcast_require(ICU icu-uc libicu-dev)
quillcast_require(ZLIB zlib zlib1g-dev)
quillcast_require(GMIME gmime-3.0 libgmime-3.0-dev)
quillcast_require(PSL libpsl libpsl-dev)
quillcast_require(CURL libcurl libcurl4-openssl-dev)
quillcast_require(SYSTEMD libsystemd libsystemd-dev)
quillcast_require(SECRET libsecret-1 libsecret-1-dev)

find_package(fmt REQUIRED)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
if(QUILLCAST_TESTS)
  find_package(GTest REQUIRED)
endif()

#include "smtp/client/no_core_dump.h"

#include <sys/prctl.h>

#include <mutex>

namespace quillcast::smtp {
namespace {

// What the process may leave behind belongs to the process, so there is one count for all.
std::mutex mutex;
int living = 0;
int before = 1;

}  // namespace

NoCoreDump::NoCoreDump() {
  const std::scoped_lock lock(mutex);
  if (living++ > 0) return;
  before = ::prctl(PR_GET_DUMPABLE);
  ::prctl(PR_SET_DUMPABLE, 0);
}

NoCoreDump::~NoCoreDump() {
  const std::scoped_lock lock(mutex);
  // 2 (dumps that root alone may read) cannot be set again by hand; none at all is the safe side of it.
  if (--living == 0 && before == 1) ::prctl(PR_SET_DUMPABLE, 1);
}

}  // namespace quillcast::smtp

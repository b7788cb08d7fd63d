// Keeps passwords out of core dumps.
#pragma once

namespace quillcast::smtp {

// While one of these lives, the process leaves no core when it dies, and no other program of the same user may look
// into it. The way it was before comes back with the last one.
class NoCoreDump {
 public:
  NoCoreDump();
  ~NoCoreDump();
  NoCoreDump(const NoCoreDump&) = delete;
  NoCoreDump& operator=(const NoCoreDump&) = delete;
};

}  // namespace quillcast::smtp

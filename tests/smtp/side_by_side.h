// Plays cases that mostly wait side by side.
#pragma once

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace quillcast::smtp {

template <typename Case, typename Play>
void PlaySideBySide(const std::vector<Case>& cases, std::size_t at_a_time, const Play& play) {
  std::atomic<std::size_t> next = 0;
  std::vector<std::jthread> players;
  while (players.size() < at_a_time) {
    players.emplace_back([&] {
      for (std::size_t at = next++; at < cases.size(); at = next++) play(cases[at]);
    });
  }
}

}  // namespace quillcast::smtp

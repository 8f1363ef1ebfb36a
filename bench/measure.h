// Timing one thing beside another.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

namespace bench {

using Work = std::function<void()>;

inline double seconds_of(const Work& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Alternates the two, so that whatever else the machine does hits both.
inline void compare(const char* what, const Work& ours, const char* peer_name, const Work& peer,
                    double limit, int rounds) {
  std::vector<double> our_times;
  std::vector<double> peer_times;
  ours();
  peer();
  for (int i = 0; i < rounds; ++i) {
    our_times.push_back(seconds_of(ours));
    peer_times.push_back(seconds_of(peer));
  }
  const double our_time = median(our_times);
  const double peer_time = median(peer_times);
  std::printf("%-30s %9.3f ms   %-28s %9.3f ms   ratio %5.2f (limit %.2f)\n", what, our_time * 1e3,
              peer_name, peer_time * 1e3, our_time / peer_time, limit);
}

}  // namespace bench

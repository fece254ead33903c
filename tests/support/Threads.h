#pragma once

#include <thread>
#include <vector>

namespace testsupport {

/// Runs the body in so many threads at once; it is told which one it is in.
template <class Body>
void inThreads(int count, const Body& body) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < count; ++thread) threads.emplace_back(body, thread);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace testsupport

// Showing how far long work has come.
#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

namespace host {

// Follows a report while the plug-in writes it and knows the section it is in: the last line that
// is underlined with as many "=".
class SectionFollower {
 public:
  explicit SectionFollower(std::filesystem::path report) : report_(std::move(report)) {}
  const std::string& current();

 private:
  std::filesystem::path report_;
  std::ifstream stream_;
  std::string line_;
  std::string previous_line_;
  std::string section_;
};

// One live line on the terminal for as long as it exists.
class LiveLine {
 public:
  LiveLine(std::string step, const std::filesystem::path& report);
  LiveLine(const LiveLine&) = delete;
  LiveLine& operator=(const LiveLine&) = delete;
  ~LiveLine();

 private:
  void run();
  void draw();

  std::string step_;
  SectionFollower section_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::mutex mutex_;
  std::condition_variable wake_;
  bool done_ = false;
  std::thread thread_;
};

}  // namespace host

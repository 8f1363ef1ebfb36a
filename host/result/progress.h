// Tells on standard error how far the collection has come.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "result/row.h"

namespace host {

class Progress {
 public:
  enum class Form {
    kLive,   // one line that is drawn again and again
    kPlain,  // a line a row
    kJson    // an object a line
  };

  // What is at work at the moment.
  struct Running {
    std::string id;
    std::string title;
    std::string section;
    double seconds = 0;
    std::string command;  // one that has been running for a while; empty: none
    double command_seconds = 0;
    double command_limit = 0;
  };

  // "auto" is a live line on a terminal that can show one. Throws UsageError for an unknown name.
  explicit Progress(const std::string& form);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { erase(); }

  void say(const std::string& text);
  void add_rows(std::size_t count) { rows_ += count; }
  void show(const std::vector<Running>& running);
  void finished(const Row& row);
  void ended(const EndedCommand& command);
  // What has been made: an archive or a folder.
  void end(int status, const char* kind, const std::string& path);

 private:
  void erase();
  static void print(const std::string& text);

  Form form_;
  std::size_t rows_ = 0;
  std::size_t done_ = 0;
  bool is_drawn_ = false;
  std::chrono::steady_clock::time_point last_ = {};
};

}  // namespace host

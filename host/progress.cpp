#include "progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <iostream>
#include <utility>

namespace host {
namespace {

constexpr auto kRedraw = std::chrono::milliseconds(200);
constexpr const char* kClearLine = "\r\033[K";

std::size_t terminal_width() {
  winsize size{};
  return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace

const std::string& SectionFollower::current() {
  if (!stream_.is_open()) stream_.open(report_, std::ios::binary);
  stream_.clear();
  for (char c = 0; stream_.get(c);) {
    if (c != '\n') {
      line_ += c;
      continue;
    }
    if (!line_.empty() && line_ == std::string(previous_line_.size(), '=')) {
      section_ = previous_line_;
    }
    previous_line_ = std::exchange(line_, {});
  }
  return section_;
}

LiveLine::LiveLine(std::string step, const std::filesystem::path& report)
    : step_(std::move(step)), section_(report), thread_([this] { run(); }) {}

LiveLine::~LiveLine() {
  {
    const std::scoped_lock lock(mutex_);
    done_ = true;
  }
  wake_.notify_one();
  thread_.join();
  std::cout << kClearLine << std::flush;
}

void LiveLine::run() {
  std::unique_lock lock(mutex_);
  while (!wake_.wait_for(lock, kRedraw, [this] { return done_; })) draw();
}

void LiveLine::draw() {
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_);
  std::string line = step_;
  if (const std::string& section = section_.current(); !section.empty()) line += ": " + section;
  line += " (" + std::to_string(elapsed.count()) + " s)";
  std::cout << kClearLine << line.substr(0, terminal_width() - 1) << std::flush;
}

}  // namespace host

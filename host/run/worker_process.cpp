#include "run/worker_process.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <iostream>

#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

struct Pipe {
  Descriptor read;
  Descriptor write;
};

// Only the supervisor's end never waits.
Pipe make_pipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw Failure("no pipe: " + error_text(errno));
  ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

// Appends what there is to read, up to a block of it. False when there is nothing for now; a pipe
// that nobody writes into any more is closed.
bool read_some(Descriptor& pipe, std::string& text) {
  std::array<char, 4096> block;
  const ssize_t got = pipe.is_open() ? ::read(pipe.get(), block.data(), block.size()) : -1;
  if (got > 0) text.append(block.data(), static_cast<std::size_t>(got));
  if (got == 0) pipe.reset();
  return got > 0;
}

constexpr int kMostBlocks = 256;  // at once: no worker may keep the supervisor busy

}  // namespace

WorkerProcess::WorkerProcess(const RunSettings& settings, const OutputFolder& folder,
                             const Subject& subject, const std::vector<Step>& steps) {
  Pipe answers = make_pipe();
  Pipe printed = make_pipe();
  // What has been said so far must not be said by the worker, too.
  std::cout << std::flush;
  std::cerr << std::flush;
  static_cast<void>(std::fflush(nullptr));
  pid_ = ::fork();
  if (pid_ == 0) {
    be_worker({settings, folder, subject, steps, answers.write.get(), printed.write.get()});
  }
  if (pid_ < 0) throw Failure("no process: " + error_text(errno));
  answers_ = std::move(answers.read);
  printed_ = std::move(printed.read);
}

std::vector<std::string> WorkerProcess::take_lines() {
  constexpr std::size_t kLongest = 1U << 20U;
  std::vector<std::string> lines;
  for (int i = 0; i < kMostBlocks && read_some(answers_, line_); ++i) {
    std::size_t begin = 0;
    for (std::size_t end = line_.find('\n'); end != std::string::npos;
         end = line_.find('\n', begin)) {
      lines.push_back(line_.substr(begin, end - begin));
      begin = end + 1;
    }
    line_.erase(0, begin);
    if (line_.size() > kLongest) line_.clear();  // not one of ours
  }
  return lines;
}

void WorkerProcess::take_printed() {
  constexpr std::size_t kKept = 512;
  for (int i = 0; i < kMostBlocks && read_some(printed_, tail_); ++i) {
    if (tail_.size() > kKept) tail_.erase(0, tail_.size() - kKept);
  }
}

void WorkerProcess::forget_printed() {
  take_printed();
  tail_.clear();
}

std::string WorkerProcess::last_printed_line() const {
  const std::size_t end = tail_.find_last_not_of(" \t\n") + 1;
  const std::string text = tail_.substr(0, end);
  return text.substr(text.rfind('\n') + 1);
}

}  // namespace host

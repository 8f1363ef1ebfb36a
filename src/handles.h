// Owners of what the system hands out: nothing is left open on any path out of a function.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <utility>

namespace sit {

class UniqueFd {
 public:
  UniqueFd() noexcept = default;
  explicit UniqueFd(int fd) noexcept : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    reset(std::exchange(other.fd_, -1));
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { reset(); }

  [[nodiscard]] int get() const noexcept { return fd_; }
  [[nodiscard]] bool is_open() const noexcept { return fd_ >= 0; }
  [[nodiscard]] int release() noexcept { return std::exchange(fd_, -1); }
  void reset(int fd = -1) noexcept {
    if (fd_ >= 0) ::close(fd_);
    fd_ = fd;
  }

 private:
  int fd_ = -1;
};

struct CloseFile {
  void operator()(FILE* stream) const noexcept { std::fclose(stream); }
};
using UniqueFile = std::unique_ptr<FILE, CloseFile>;

struct CloseDir {
  void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};
using UniqueDir = std::unique_ptr<DIR, CloseDir>;

}  // namespace sit

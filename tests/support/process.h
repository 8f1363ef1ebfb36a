// What a test does to its own process and to what it sees of the machine.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <functional>
#include <string>

namespace test {

// The exit status of a child that does this and ends at once; -1 when a signal ends it.
int in_child(const std::function<int()>& work);

// Not with SA_RESTART: what waits is really interrupted.
bool handle(int signal, void (*handler)(int));

// Interrupts this process again and again; 0 ends that.
bool interrupt_every(suseconds_t microseconds);

// Files may not grow beyond so many bytes while this lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes);
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

// Lets the kernel refuse a call from now on; if there are flags, only with one of these in its
// first argument.
void refuse(int call, int error, unsigned flags = 0);

// Mounts of this process alone from now on. False where the machine does not allow them, which
// further namespaces may change.
bool private_mounts(int further = 0);

// Mounts a small file system for this process alone.
[[nodiscard]] bool mount_small(const std::string& where, const std::string& size);

}  // namespace test

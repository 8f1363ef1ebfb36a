#include "support.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace fuzz {
namespace {

namespace fs = std::filesystem;

constinit const Target* targets = nullptr;
constinit const Target* chosen = nullptr;

void require(bool succeeded, const char* what) {
  if (succeeded) return;
  std::perror(what);
  std::exit(1);
}

class ScratchFolder {
 public:
  ScratchFolder() : path_(fs::temp_directory_path() / "sit-fuzz-XXXXXX") {
    require(::mkdtemp(path_.data()) != nullptr, "fuzz: no scratch folder");
  }
  ~ScratchFolder() { fs::remove_all(path_); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
};

const std::string& scratch_folder() {
  static const ScratchFolder folder;
  return folder.path();
}

// Ends the process as a skipped test where the machine does not allow that.
void make_usr_bin_private() {
  const bool is_private =
      (::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
      ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
      ::mount("tmpfs", "/usr/bin", "tmpfs", 0, nullptr) == 0;
  if (is_private) return;
  std::perror("fuzz: skipped, this machine allows no /usr/bin of our own");
  constexpr int kSkipped = 77;
  std::exit(kSkipped);
}

// Nothing of one input may show in the next one.
void forget_last_input() noexcept {
  for (LogEntry* entry = logs; entry->name != nullptr; ++entry) {
    for (char* owned : {entry->version, entry->name, entry->logFile}) std::free(owned);
    *entry = {};
  }
  std::free(plistpfname);
  plistpfname = nullptr;
  obroker[0] = '\0';
}

}  // namespace

Target::Target(const char* name, Feed feed, Needs needs) noexcept
    : name_(name), feed_(feed), needs_(needs), next_(targets) {
  targets = this;
}

const Target* Target::find(std::string_view name) noexcept {
  const Target* target = targets;
  while (target != nullptr && target->name_ != name) target = target->next_;
  return target;
}

std::string scratch(std::string_view name) { return scratch_folder() + '/' + std::string(name); }

void write_file(const std::string& path, std::string_view input) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0700);
  require(fd >= 0 && ::write(fd, input.data(), input.size()) == static_cast<ssize_t>(input.size()),
          path.c_str());
  ::close(fd);
}

std::string file(std::string_view name, std::string_view input) {
  std::string path = scratch(name);
  fs::create_directories(fs::path(path).parent_path());
  write_file(path, input);
  return path;
}

std::string tool_that_prints(std::string_view name) {
  return file("tool", "#!/bin/sh\nexec /bin/cat '" + scratch(name) + "'\n");
}

Text text(std::string_view input) {
  Text copy{new char[input.size() + 1]};
  copy[input.copy(copy.get(), input.size())] = '\0';
  return copy;
}

Record installation(const char* version) {
  Record record{createPHMVER()};
  require(record != nullptr, "fuzz: no record");
  record->dir = ::strdup(scratch_folder().c_str());
  if (version != nullptr) record->version = ::strdup(version);
  return record;
}

void FreeRecord::operator()(PHMVER* record) const noexcept {
  for (char* owned :
       {record->version, record->dir, record->maintLevel, record->fullVersion, record->pluginsFile,
        record->conmgrFile, record->wrkDir, record->initFile, record->pelVersion}) {
    std::free(owned);
  }
  std::free(record);
}

FILE* nowhere() {
  static FILE* const stream = std::fopen("/dev/null", "we");
  return stream;
}

}  // namespace fuzz

// The library takes these functions, not the system's: whatever an input says, nothing is run.
extern "C" pid_t fork() noexcept {
  errno = EAGAIN;
  return -1;
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int clone(int (*run)(void*), void* stack, int flags, void* argument, ...) noexcept {
  if (fuzz::chosen->needs() != fuzz::Needs::kChildren) return fork();
  static const auto real_clone = reinterpret_cast<decltype(&clone)>(::dlsym(RTLD_NEXT, "clone"));
  return real_clone(run, stack, flags, argument);
}

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  const char* name = std::getenv("FUZZ_TARGET");
  fuzz::chosen = fuzz::Target::find(name == nullptr ? "" : name);
  errno = EINVAL;
  fuzz::require(fuzz::chosen != nullptr, "fuzz: FUZZ_TARGET names no target");
  if (fuzz::chosen->needs() == fuzz::Needs::kPrivateLauncher) fuzz::make_usr_bin_private();
  for (const char* variable : {"PHM", "DELVONINIT", "PELCFG", "WRKDIR"}) ::unsetenv(variable);
  ::setenv("TMPDIR", fuzz::scratch_folder().c_str(), 1);
  ::setenv("PATH", fuzz::scratch("no-commands").c_str(), 1);
  SetVerboseMode(1);
  fuzz::require(LogOpen("/dev/null", SIT_APPEND) == SIT_OK, "fuzz: no report");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  fuzz::chosen->run({reinterpret_cast<const char*>(data), size});
  fuzz::forget_last_input();
  return 0;
}

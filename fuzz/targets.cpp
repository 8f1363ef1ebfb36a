// The parsers under random input: each is fed through the exported functions, and the environment
// variable FUZZ_TARGET names the one that this process feeds.
#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "sit/sit.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kVersion = "10.1B03";
constexpr const char* kLauncher = "/usr/bin/pel";  // all that there is in a private /usr/bin

void require(bool succeeded, const char* what) {
  if (succeeded) return;
  std::perror(what);
  std::exit(1);
}

struct ScratchFolder {
  ScratchFolder() { require(::mkdtemp(path.data()) != nullptr, "fuzz: no scratch folder"); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() { fs::remove_all(path); }
  std::string path = fs::temp_directory_path() / "sit-fuzz-XXXXXX";
};

std::string scratch(const std::string& name) {
  static const ScratchFolder folder;
  return folder.path + '/' + name;
}

const char* write_file(const std::string& path, std::string_view input) {
  fs::create_directories(fs::path(path).parent_path());
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0700);
  require(fd >= 0 && ::write(fd, input.data(), input.size()) == static_cast<ssize_t>(input.size()),
          path.c_str());
  ::close(fd);
  return path.c_str();
}

// A file of the scratch folder, and its path, valid until the next one is asked for.
const char* file(const char* name, std::string_view input) {
  static std::string path;
  path = scratch(name);
  return write_file(path, input);
}

// The input as a C text with not a byte behind its terminator, so that reading on is noticed.
std::unique_ptr<char[]> text(std::string_view input) {
  std::unique_ptr<char[]> copy{new char[input.size() + 1]};
  copy[input.copy(copy.get(), input.size())] = '\0';
  return copy;
}

struct FreeRecord {
  void operator()(PHMVER* record) const noexcept {
    for (char* owned : {record->version, record->dir, record->maintLevel, record->fullVersion,
                        record->pluginsFile, record->conmgrFile, record->wrkDir, record->initFile,
                        record->pelVersion}) {
      std::free(owned);
    }
    std::free(record);
  }
};
using Record = std::unique_ptr<PHMVER, FreeRecord>;

// The record of an installation in the scratch folder.
Record installation(const char* version) {
  Record record{createPHMVER()};
  require(record != nullptr, "fuzz: no record");
  record->dir = ::strdup(scratch("").c_str());
  if (version != nullptr) record->version = ::strdup(version);
  return record;
}

FILE* nowhere() {
  static FILE* const stream = std::fopen("/dev/null", "we");
  return stream;
}

void format(char* output, const char* message, ...) {
  std::va_list arguments;
  va_start(arguments, message);
  msgsub(output, message, arguments);
  va_end(arguments);
}

// Every conversion may be given a pointer: those that want a number take a part of it.
template <std::size_t... Index>
void format_texts(std::string_view message, std::index_sequence<Index...> /*indices*/) {
  static const std::string long_text(SIT_MESSAGE_BYTES, 'x');
  static const std::array<const char*, 4> texts{"", "text", nullptr, long_text.c_str()};
  const std::unique_ptr<char[]> output{new char[SIT_MESSAGE_BYTES]};
  if (std::ranges::count(message, '%') > static_cast<std::ptrdiff_t>(sizeof...(Index))) return;
  format(output.get(), text(message).get(), texts[Index % texts.size()]...);
}

// Thousands of lines a second; the whole tool below is a matter of milliseconds.
void feed_check_lines(std::string_view input) {
  while (!input.empty()) {
    const std::size_t length = std::min(input.find('\n'), input.size() - 1) + 1;
    const auto line = text(input.substr(0, length));
    std::array<char, 255> value{};
    SetObjectName(value.data(), line.get());
    Populate_Logs_Table(line.get(), kVersion, value.data());
    ReadPropertyValue_From_Validation(line.get(), "workDir", value.data());
    char* parameter_file = GetPFValue(line.get());
    Add_pf_name(value.data(), parameter_file);
    std::free(parameter_file);
    input.remove_prefix(length);
  }
}

// The first character chooses among the kinds of brokers and whether only one is looked for.
void feed_check_tool(std::string_view input) {
  const unsigned choice = input.empty() ? 0 : static_cast<unsigned char>(input[0]);
  file("output", input);
  const char* tool = file("tool", "#!/bin/sh\nexec /bin/cat '" + scratch("output") + "'\n");
  ValidateOBInstance(kVersion, tool, choice % 2 == 0 ? "" : "orders", "",
                     scripts[choice / 2 % SIT_CHECK_TOOLS].type);
}

// What a target needs of this process, which can run nothing and sees the machine as it is.
enum class Needs { kNothing, kChildren, kPrivateLauncher };

using Path = std::array<char, SIT_PATH_BYTES>;

struct Target {
  std::string_view name;
  void (*feed)(std::string_view input);
  Needs needs = Needs::kNothing;
};
constexpr Target kTargets[] = {
    {"message",
     [](std::string_view input) { format_texts(input, std::make_index_sequence<32>{}); }},
    {"field",
     [](std::string_view input) {
       if (input.size() < 2) return;
       strentry(static_cast<unsigned char>(input[0]), text(input.substr(2)).get(), input[1]);
     }},
    {"version",
     [](std::string_view input) {
       file("version", input);
       const Record record = installation(nullptr);
       getPelVerInfoFile(record.get(), nowhere());
       AppendVerLogFile(record->version, -1, "log");
     }},
    {"launcher",
     [](std::string_view input) {
       write_file(kLauncher, input);
       PHMVER* list = nullptr;
       getPelUnixVersions(&list, nowhere());
       const Record record{list};
     },
     Needs::kPrivateLauncher},
    {"delvon_init",
     [](std::string_view input) {
       const Record record = installation(nullptr);
       record->initFile = ::strdup(file("delvon.ini", input));
       Path directory{};
       GetDelvonTarg(record->initFile, directory.data());
       CopyDelvon_Files(scratch("copies").c_str(), record.get());
     }},
    {"plugins9",
     [](std::string_view input) { ReadPluginsV9(file("AdminServerPlugins.dat", input)); }},
    {"plugins10",
     [](std::string_view input) { ReadPluginsV10(file("AdminServerPlugins.properties", input)); }},
    {"admin_script",
     [](std::string_view input) {
       file("bin/peladsv", input);
       const Record record = installation(kVersion);
       pphm = record.get();
       std::free(GetAdmSrvWrkDir(kVersion));
       pphm = nullptr;
     }},
    {"conmgr",
     [](std::string_view input) {
       Populate_Logs_Table_ConMgr(file("conmgr.properties", input), kVersion);
       List_log_table();
     }},
    {"check_lines", feed_check_lines},
    {"check_tool", feed_check_tool, Needs::kChildren},
    {"magnus_conf",
     [](std::string_view input) {
       Path object_file{};
       GetNetscapeObjConf(file("https-shop/config/magnus.conf", input),
                          scratch("https-shop").c_str(), object_file.data());
       GetNetscapeServerDir(scratch("").c_str(), "shop", object_file.data());
     }},
    {"obj_conf", [](std::string_view input) { LogNetscapeCGIDirs(file("obj.conf", input)); }},
    {"httpd_conf",
     [](std::string_view input) {
       FindApacheScriptAlias(file("httpd.conf", input), scratch("").c_str());
     }},
    {"conf_value", [](std::string_view input) {
       Path value{};
       GetConfPathName(text(input).get(), value.data());
       MakeAbsolutePath(value.data(), text(input).get(), value.data());
       StripTrailingSlash(value.data());
     }}};

const Target* chosen = nullptr;

// Ends the process as a skipped test where the machine does not allow that.
void make_usr_bin_private() {
  if ((::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
      ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
      ::mount("tmpfs", "/usr/bin", "tmpfs", 0, nullptr) == 0) {
    return;
  }
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
  std::free(std::exchange(plistpfname, nullptr));
  obroker[0] = '\0';
}

}  // namespace

// The library takes these functions, not the system's: whatever an input says, nothing is run.
extern "C" pid_t fork() noexcept {
  errno = EAGAIN;
  return -1;
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int clone(int (*run)(void*), void* stack, int flags, void* argument, ...) noexcept {
  if (chosen->needs != Needs::kChildren) return fork();
  static const auto real_clone = reinterpret_cast<decltype(&clone)>(::dlsym(RTLD_NEXT, "clone"));
  return real_clone(run, stack, flags, argument);
}

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  const char* name = std::getenv("FUZZ_TARGET");
  chosen =
      std::ranges::find(kTargets, std::string_view{name == nullptr ? "" : name}, &Target::name);
  errno = EINVAL;
  require(chosen != std::end(kTargets), "fuzz: FUZZ_TARGET names no target");
  if (chosen->needs == Needs::kPrivateLauncher) make_usr_bin_private();
  for (const char* variable : {"PHM", "DELVONINIT", "PELCFG", "WRKDIR"}) ::unsetenv(variable);
  ::setenv("TMPDIR", scratch("").c_str(), 1);
  ::setenv("PATH", scratch("no-commands").c_str(), 1);
  SetVerboseMode(1);
  require(LogOpen("/dev/null", SIT_APPEND) == SIT_OK, "fuzz: no report");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  chosen->feed({reinterpret_cast<const char*>(data), size});
  forget_last_input();
  return 0;
}

// Measures the plug-in and, in the same run, what one would use instead of it.
// Usage: bench_sit BENCH_HOST PLUGIN
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "measure.h"
#include "sit/sit.h"
#include "system_script.h"

namespace {

namespace fs = std::filesystem;
using bench::compare;
using bench::seconds_of;

// What execcmd does, by the C library's own means.
void spawn_true(const std::string& output) {
  const char* words[] = {"sh", "-c", "true", nullptr};
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, 2, output.c_str(), O_WRONLY | O_CREAT, 0666);
  ::posix_spawn_file_actions_adddup2(&actions, 2, 1);
  pid_t child = 0;
  if (::posix_spawn(&child, "/bin/sh", &actions, nullptr, const_cast<char**>(words), environ) ==
      0) {
    ::waitpid(child, nullptr, 0);
  }
  ::posix_spawn_file_actions_destroy(&actions);
}

// The memory is in pages of 4 KiB: the most page tables that a host of its size can have.
void compare_hosts_of_any_size(const std::string& output) {
  for (const std::size_t gibibytes : {0U, 1U, 8U}) {
    const std::size_t size = gibibytes << 30U;
    void* memory = MAP_FAILED;
    if (size > 0) {
      memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      if (memory == MAP_FAILED) return;
      ::madvise(memory, size, MADV_NOHUGEPAGE);
      std::memset(memory, 'x', size);
    }
    compare(("execcmd of true, host of " + std::to_string(gibibytes) + " GiB").c_str(),
            [&] { execcmd("true", output.c_str()); }, "posix_spawn of true",
            [&] { spawn_true(output); }, 1.3, 501);
    if (size > 0) ::munmap(memory, size);
  }
}

void make_files(const fs::path& root, int count) {
  constexpr int kPerFolder = 500;
  for (int i = 0; i < count; ++i) {
    const fs::path folder = root / ("folder" + std::to_string(i / kPerFolder));
    if (i % kPerFolder == 0) fs::create_directories(folder);
    std::ofstream(folder / ("file" + std::to_string(i))) << i;
  }
}

// An old installation whose certificates are listed one by one, through openssl.
void make_store(const fs::path& root, int count) {
  fs::create_directories(root / "certs");
  fs::create_directories(root / "bin");
  const std::string certificate = (root / "certs/0.0").string();
  const std::string make = "openssl req -x509 -newkey ed25519 -nodes -subj /CN=bench -keyout " +
                           (root / "key").string() + " -out " + certificate + " 2> /dev/null";
  if (std::system(make.c_str()) != 0) return;
  for (int i = 1; i < count; ++i) {
    fs::copy_file(certificate, root / "certs" / (std::to_string(i) + ".0"));
  }
  std::ofstream(root / "bin/sslc") << "#!/bin/sh\nexec openssl \"$@\"\n";
  fs::permissions(root / "bin/sslc", fs::perms::owner_all);
}

void compare_installations(const std::string& folder, const std::string& report) {
  constexpr int kFiles = 50000;
  constexpr int kCertificates = 200;
  std::string version = "9.1E";
  std::string files = folder + "/files";
  std::string store = folder + "/store";
  make_files(files, kFiles);
  make_store(store, kCertificates);
  PHMVER record{};
  record.version = version.data();
  record.major = 9;
  pphm = &record;
  record.dir = files.data();
  const std::string list = "ls -lLR " + files + " > " + folder + "/listing";
  compare(
      "GetPelInstFiles, 50,000 files",
      [&] { GetPelInstFiles(report.c_str(), "9.1E", 64, 0, SEL_ANY); }, "ls -lLR into a file",
      [&] { static_cast<void>(std::system(list.c_str())); }, 1.5, 5);
  record.dir = store.data();
  const std::string loop = "for f in " + store + "/certs/*.0; do " + store +
                           "/bin/sslc x509 -text -in $f; done > " + folder + "/listing 2>&1";
  compare(
      "GetPelSecurityLog, 200 certs",
      [&] { GetPelSecurityLog(report.c_str(), "9.1E", 64, 0, SEL_ANY); },
      "a shell loop over the tool", [&] { static_cast<void>(std::system(loop.c_str())); }, 1.2, 5);
  pphm = nullptr;
}

// The bytes this process has read so far.
long bytes_read() {
  std::ifstream counts("/proc/self/io");
  std::string name;
  long value = 0;
  while (counts >> name >> value && name != "rchar:") {
  }
  return value;
}

// A log of 1 MB as a whole, and the last megabyte of a sparse one of 8 GiB.
void compare_log_copies(const std::string& folder) {
  constexpr std::uintmax_t kSparse = std::uintmax_t{8} << 30U;
  constexpr int kLines = 16384;
  const std::string log = folder + "/log";
  const std::string copy = folder + "/copy";
  std::ofstream lines(log);
  for (int i = 0; i < kLines; ++i)
    lines << "A line of a log that is 63 characters long without its end 12345\n";
  lines.close();
  fs::resize_file(log, 1U << 20U);
  compare(
      "Copy_File, 1 MB", [&] { Copy_File(log.c_str(), copy.c_str(), 1); }, "cp",
      [&] { static_cast<void>(std::system(("cp " + log + " " + copy).c_str())); }, 2.0, 51);
  fs::resize_file(log, kSparse);
  const long before = bytes_read();
  const double took = seconds_of([&] { Copy_File(log.c_str(), copy.c_str(), 1); });
  std::printf("Copy_File, trimming 8 GiB: %.3f ms (limit 20), %ld bytes read (1048576 kept)\n",
              took * 1e3, bytes_read() - before);
}

// Comes last: what it wrote is on its way to the disk for a while.
void compare_whole_copy(const std::string& folder) {
  constexpr std::size_t kWhole = std::size_t{64} << 20U;
  const std::string log = folder + "/whole";
  const std::string copy = folder + "/copy-of-whole";
  std::ofstream(log) << std::string(kWhole, 'x');
  compare(
      "Copy_File, 64 MiB whole", [&] { Copy_File(log.c_str(), copy.c_str(), 0); }, "cp",
      [&] { static_cast<void>(std::system(("cp " + log + " " + copy).c_str())); }, 1.1, 21);
}

// Brokers of one check tool, ten lines each.
void compare_validation(const std::string& folder) {
  constexpr int kBrokers = 300;
  const std::string output = folder + "/brokers";
  const std::string tool = folder + "/tool";
  std::ofstream lines(output);
  for (int i = 0; i < kBrokers; ++i) {
    const std::string name = "broker" + std::to_string(i);
    lines << "Configuration Information for OstrelBroker.AP." << name << "\nworkDir: /work/" << name
          << "\nsrvrStartupParam: -pf start.pf -q\nsrvrLogFile: /work/" << name
          << ".server.log\nbrokerLogFile: /work/" << name << ".broker.log\n";
    for (const char* other : {"portNumber", "minServers", "maxServers", "uuid", "userName"}) {
      lines << other << ": " << i << "\n";
    }
  }
  lines.close();
  std::ofstream(tool) << "#!/bin/sh\nwhile read -r line; do echo \"$line\"; done < " << output
                      << "\n";
  fs::permissions(tool, fs::perms::owner_all);
  const std::string report = folder + "/report.txt";
  LogOpen(report.c_str(), 64);
  compare(
      "A check tool's 300 brokers",
      [&] {
        ValidateOBInstance("10.1B", tool.c_str(), nullptr, "", "AP");
        std::free(std::exchange(plistpfname, nullptr));
      },
      "the tool into a file",
      [&] { static_cast<void>(std::system((tool + " > " + folder + "/listing").c_str())); }, 1.2,
      21);
  LogClose(1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::string folder = (fs::temp_directory_path() / "sit-bench-XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr) return 1;
  const std::string report = folder + "/report.txt";
  const std::string script = folder + "/script";
  std::ofstream(script) << bench::system_script(folder + "/script.txt");

  compare(
      "GetSysInfo", [&] { GetSysInfo(report.c_str(), 0, 64, 1); }, "the same as a shell script",
      [&] { static_cast<void>(std::system(("sh " + script).c_str())); }, 1.1, 21);
  compare_hosts_of_any_size(folder + "/out");
  compare_installations(folder, report);
  compare_log_copies(folder);
  compare_validation(folder);
  std::printf("Peak memory of a C host during GetSysInfo (limit 8192 kB): ");
  std::fflush(stdout);
  const std::string host = std::string(argv[1]) + " " + argv[2] + " " + report;
  const int status = std::system(host.c_str());
  compare_whole_copy(folder);
  fs::remove_all(folder);
  return status == 0 ? 0 : 1;
}

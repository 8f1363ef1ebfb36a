// Measures whole collections.
// Usage: bench_collect SIT
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "measure.h"
#include "system_script.h"

namespace {

namespace fs = std::filesystem;

class Bench {
 public:
  explicit Bench(std::string sit) : sit_(std::move(sit)) {
    if (::mkdtemp(folder_.data()) == nullptr) std::exit(1);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;
  ~Bench() { fs::remove_all(folder_); }

  void machine_beside_script() const {
    const std::string script = path("script");
    std::ofstream(script) << bench::system_script(path("system.txt")) << "set > "
                          << path("environment.txt") << "\njava -version > " << path("versions.txt")
                          << " 2>&1\n";
    bench::compare(
        "sit collect, this machine", [&] { collect("--no-extras"); }, "the same as a shell script",
        [&] { run("sh " + script); }, 1.15, 21);
  }

  // Two installations whose configuration tool takes its time.
  void two_slow_subjects() const {
    std::string both;
    for (const char* name : {"one", "two"}) {
      make_installation(path(name), "sleep 2");
      both += " --installation " + path(name);
    }
    const std::string only = "--only configuration --jobs 2 --installation " + path("one");
    bench::compare(
        "two slow subjects", [&] { collect("--only configuration --jobs 2" + both); },
        "the slower one alone", [&] { collect(only); }, 1.2, 3);
  }

  void bundle_beside_script() const {
    const std::string script = path("script");
    std::ofstream(script) << bench::system_script(path("plain/system.txt")) << "set > "
                          << path("plain/environment.txt") << "\njava -version > "
                          << path("plain/versions.txt") << " 2>&1\ntar c -C " << folder_
                          << " plain | xz -1 > " << path("plain.tar.xz") << "\n";
    fs::create_directories(path("plain"));
    bench::compare(
        "an archive of this machine",
        [&] { run(sit_ + " collect --no-extras --output " + path("out") + " > /dev/null 2>&1"); },
        "the same as a shell script into tar and xz -1", [&] { run("sh " + script); }, 1.3, 21);
  }

  // A log of 200 MB, with a secret in one of some hundred lines, beside a copy of it; the time of
  // the masking is what it adds to the collecting.
  void masking() const {
    constexpr double kMegabytes = 200;
    const std::string log = path("log");
    run("i=0; while [ $i -lt 200 ]; do echo \"[26/11/24@11:02:33.$i+0000] P-004711 T-00$i 1 AS -- "
        "the "
        "user's session key was taken from table orders of broker customs (8287)\"; i=$((i+1)); "
        "done > " +
        log + ".part; echo 'jdbc url x://ann:hunter2@db' >> " + log + ".part; yes " + log +
        ".part | head -n 8600 | xargs cat | head -c 200000000 > " + log);
    const std::string capture = "--only capture --max-file 1G --capture 'cp " + log + " .' ";
    const double plain = bench::seconds_of([&] { collect("--unmasked " + capture); });
    const double masked = bench::seconds_of([&] { collect(capture); });
    std::printf("masking a log of 200 MB: %.0f MB/s (limit 150)\n", kMegabytes / (masked - plain));
    fs::remove(log);
  }

  void hung_tool() const {
    make_tool(path("bin/ipcs"), "trap '' TERM; while :; do sleep 1; done");
    const double seconds = bench::seconds_of([&] {
      run("PATH=" + path("bin") + ":$PATH " + sit_ +
          " collect --no-extras --command-limit 3 --output " + path("out") + " > /dev/null 2>&1");
    });
    std::printf("ipcs hangs and ignores SIGTERM, command limit 3 s: %.2f s (limit 8)\n", seconds);
  }

  // Of the host alone, without its workers.
  void memory(const char* format, int limit) const {
    const pid_t child = ::fork();
    if (child == 0) {
      const int nothing = ::open("/dev/null", O_WRONLY);
      ::dup2(nothing, STDOUT_FILENO);
      ::dup2(nothing, STDERR_FILENO);
      ::execl(sit_.c_str(), "sit", "collect", "--no-extras", "--output", path("out").c_str(),
              "--format", format, "--only", "capture", "--capture",
              "yes 'a line of a log, as long as such lines are' | head -c 200000000", "--capture",
              "head -c 500000000 /dev/zero | tr '\\0' x", nullptr);
      ::_exit(1);
    }
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    std::printf(
        "Peak memory of sit with reports of 200 MB and a line of 500 MB, archive %s: %ld kB "
        "(limit %d)\n",
        format, usage.ru_maxrss, limit);
  }

 private:
  [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }

  static void run(const std::string& command) { static_cast<void>(std::system(command.c_str())); }

  void collect(const std::string& options) const {
    run(sit_ + " collect --format none --output " + path("out") + " " + options +
        " > /dev/null 2>&1");
  }

  static void make_tool(const fs::path& file, const std::string& script) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "#!/bin/sh\n" << script << "\n";
    fs::permissions(file, fs::perms::owner_all);
  }

  static void make_installation(const fs::path& folder, const std::string& tool) {
    make_tool(folder / "bin/showcfg", tool);
    std::ofstream(folder / "version") << "Pelloran Version 10.1B03 as of today\n";
  }

  std::string sit_;
  std::string folder_ = (fs::temp_directory_path() / "sit-bench-XXXXXX").string();
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const Bench bench(argv[1]);
  bench.machine_beside_script();
  bench.bundle_beside_script();
  bench.two_slow_subjects();
  bench.masking();
  bench.hung_tool();
  bench.memory("none", 16384);
  bench.memory("xz", 40960);
  return 0;
}

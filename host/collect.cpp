#include "collect.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <system_error>

#include "catalogue.h"
#include "meaning.h"
#include "progress.h"
#include "sit/pelver.h"
#include "sit/sitexec.h"
#include "steps.h"

namespace host {
namespace {

constexpr mode_t kOwnerOnly = 0700;
constexpr mode_t kOwnerOnlyMask = 0077;

struct Done {
  Step step;
  int code;
  double seconds;
  std::uintmax_t bytes;
};

std::string folder_name() {
  std::array<char, 256> host{};
  if (::gethostname(host.data(), host.size() - 1) != 0 || host[0] == '\0') host = {"machine"};
  std::string name = host.data();
  std::replace(name.begin(), name.end(), '/', '_');
  std::array<char, 32> time{};
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  static_cast<void>(std::strftime(time.data(), time.size(), "-%Y%m%d-%H%M%S", &local));
  return "sit-" + name + time.data();
}

// A new folder that only its owner may look into: reports hold secrets.
std::filesystem::path make_folder(const std::filesystem::path& parent) {
  constexpr int kMostInOneSecond = 100;
  std::error_code ignored;
  std::filesystem::create_directories(parent, ignored);
  const std::filesystem::path base = std::filesystem::absolute(parent) / folder_name();
  for (int i = 1; i <= kMostInOneSecond; ++i) {
    std::filesystem::path folder = base;
    if (i > 1) (folder += "-") += std::to_string(i);
    if (::mkdir(folder.c_str(), kOwnerOnly) == 0) return folder;
    if (errno != EEXIST) break;
  }
  throw Failure("cannot make the output folder " + base.string() + ": " +
                std::generic_category().message(errno));
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> fields;
  std::istringstream stream(text);
  for (std::string field; std::getline(stream, field, separator);) fields.push_back(field);
  return fields;
}

// Returns the version keys of the installations. Without any, the reports are about the machine
// alone.
std::vector<std::string> prepare(const Plugin& plugin, const CollectOptions& options) {
  if (options.verbose) plugin.function<decltype(::SetVerboseMode)>("SetVerboseMode")(1);
  const std::unique_ptr<char, decltype(&std::free)> keys(
      plugin.function<decltype(::GetPelVersList)>("GetPelVersList")(SEL_ANY), &std::free);
  if (plugin.variable<PHMVER*>("pphm") == nullptr) {
    plugin.function<decltype(::SetPelloranIndependent)>("SetPelloranIndependent")(1);
    std::cout << "No Pelloran installation found; collecting product-independent information.\n"
              << std::flush;
  }
  return keys == nullptr ? std::vector<std::string>{} : split(keys.get(), ',');
}

Done run(const Plugin& plugin, const Step& step, const std::filesystem::path& folder,
         const std::string& label, bool live) {
  const std::filesystem::path report = folder / step.file;
  // Where this fails, the step says why there is no report.
  std::error_code ignored;
  std::filesystem::create_directories(report.parent_path(), ignored);
  const auto start = std::chrono::steady_clock::now();
  int code = 0;
  {
    std::optional<LiveLine> line;
    if (live) line.emplace(label, report);
    code = step.run(plugin, report);
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  std::error_code missing;
  const std::uintmax_t bytes = std::filesystem::file_size(report, missing);
  return {step, code, took.count(), missing ? 0 : bytes};
}

void print_table(const std::vector<Done>& steps) {
  std::size_t file_width = 4;
  for (const Done& done : steps) {
    file_width = std::max(file_width, done.step.file.string().size());
  }
  const auto row = [file_width](const auto& step, const auto& code, const auto& seconds,
                                const auto& bytes, const std::string& file,
                                const std::string& meaning) {
    std::cout << std::left << std::setw(19) << step << std::right << std::setw(7) << code
              << std::setw(9) << seconds << std::setw(10) << bytes << "  " << std::left
              << std::setw(static_cast<int>(file_width) + 2) << file << meaning << "\n";
  };
  std::cout << "\n" << std::fixed << std::setprecision(2);
  row("Step", "Result", "Seconds", "Bytes", "File", "Meaning");
  for (const Done& done : steps) {
    row(done.step.command, done.code, done.seconds, done.bytes, done.step.file.string(),
        meaning_of(find_entry(done.step.command), done.code));
  }
}

}  // namespace

int collect(const Plugin& plugin, const CollectOptions& options) {
  ::umask(kOwnerOnlyMask);
  const std::filesystem::path folder = make_folder(options.output);
  const bool live = ::isatty(STDOUT_FILENO) != 0;
  const std::vector<std::string> keys = prepare(plugin, options);

  const std::vector<Step> steps = collection_steps(keys, options.wishes);
  std::vector<Done> finished;
  for (const Step& step : steps) {
    const std::string label = "step " + std::to_string(finished.size() + 1) + " of " +
                              std::to_string(steps.size()) + ", " + step.command;
    finished.push_back(run(plugin, step, folder, label, live));
    if (live) continue;
    std::cout << label << ": " << meaning_of(find_entry(step.command), finished.back().code) << "\n"
              << std::flush;
  }
  print_table(finished);
  std::cout << "\nReports are in " << folder.string() << "\n";
  const bool all_well = std::all_of(finished.begin(), finished.end(),
                                    [](const Done& done) { return done.code == 0; });
  return all_well ? 0 : 1;
}

}  // namespace host

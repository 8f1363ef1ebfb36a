#include "run/worker.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>

#include "catalogue.h"
#include "plugin.h"
#include "result/row.h"
#include "run/worker_signals.h"
#include "sit/codes.h"
#include "support/failure.h"
#include "support/text.h"
#include "work/answers.h"
#include "work/discovery.h"
#include "work/glance.h"
#include "work/logs.h"

namespace host {
namespace {

using nlohmann::json;

void switch_on(const Plugin& plugin, const std::string& name) {
  const std::vector<std::string> on{"1"};
  static_cast<void>(find_entry(name).call(plugin, on));
}

void set(const std::string& name, const std::optional<std::string>& value) {
  value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
}

// Nothing of the host's is left in reach: neither a terminal nor a descriptor but the two. Where
// the kernel cannot close so many, no harm comes of it: they are not for commands.
void leave_the_host(const WorkerOrder& order) {
  ::setsid();
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const int nothing = ::open("/dev/null", O_RDONLY);
  ::dup2(nothing, STDIN_FILENO);
  ::dup2(order.printed, STDOUT_FILENO);
  ::dup2(order.printed, STDERR_FILENO);
  const int first = std::min(order.answers, order.folder.descriptor());
  const int last = std::max(order.answers, order.folder.descriptor());
  const std::pair<int, int> between[] = {
      {STDERR_FILENO + 1, first - 1}, {first + 1, last - 1}, {last + 1, INT_MAX}};
  for (const auto& [from, to] : between) {
    if (from <= to) ::syscall(SYS_close_range, from, to, 0);
  }
}

void take_usual_signals() {
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  for (int signal = 1; signal < NSIG; ++signal) ::signal(signal, SIG_DFL);
  // A file that may not grow is a failed writing, nothing worse; the same for this pipe.
  ::signal(SIGXFSZ, SIG_IGN);
  ::signal(SIGPIPE, SIG_IGN);
}

void limit_files() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur <= kLargestFile) return;
  limit.rlim_cur = kLargestFile;
  static_cast<void>(::setrlimit(RLIMIT_FSIZE, &limit));
}

// The variables that a worker changes, as the user has them.
Environment environment_of_user(const WorkerOrder& order) {
  Environment environment = order.subject.environment;
  environment["TMPDIR"];
  for (auto& [name, value] : environment) {
    const char* own = std::getenv(name.c_str());
    value = own == nullptr ? std::nullopt : std::optional<std::string>(own);
  }
  return environment;
}

class Worker {
 public:
  explicit Worker(const WorkerOrder& order)
      : order_(order), answers_(order.answers), users_(environment_of_user(order)) {}

  void run() {
    const std::string temporary = ".tmp/" + std::to_string(::getpid());
    static_cast<void>(order_.folder.make_way_to(temporary + "/"));
    temporary_ = Descriptor(::openat(order_.folder.descriptor(), temporary.c_str(),
                                     O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ours_ = order_.subject.environment;
    ours_["TMPDIR"] = order_.folder.temporary() + "/" + std::to_string(::getpid());
    settle();
    for (const auto& [name, value] : ours_) set(name, value);
    const Plugin plugin(order_.settings.plugin, plugin_names());
    answers_.send('v', find_entry("GetAPIVersion").call(plugin, {}).text.value_or(""));
    if (order_.settings.verbose) switch_on(plugin, "SetVerboseMode");
    if (order_.subject.is_independent) switch_on(plugin, "SetPelloranIndependent");
    for (const Step& step : order_.steps) {
      set_current_report(step.file.c_str());
      settle();
      answers_.send('r', run(plugin, step));
    }
  }

 private:
  // What a product in this process may have changed during the row before.
  void settle() const {
    if (::fchdir(order_.folder.descriptor()) != 0) throw Failure("cannot enter the output folder");
    ::umask(kOwnerOnlyMask);
    take_usual_signals();
    report_signals({order_.answers, order_.folder.descriptor(), temporary_.get()});
  }

  json run(const Plugin& plugin, const Step& step) {
    switch (step.kind->work) {
      case Work::kDiscovery:
        return json{{"found", discover(plugin)}};
      case Work::kGlance:
        look_around(answers_, order_.settings.noted);
        return json::object();
      case Work::kCall:
      case Work::kCallForEachLog:
        break;
    }
    if (const int error = make_room(step); error != 0) {
      return {{"why", "cannot make " + step.file + ": " + error_text(error)}};
    }
    return step.kind->work == Work::kCall ? call(plugin, step) : copy_logs(plugin, step);
  }

  // The folder, and the file unless the plug-in makes it: a new one in any case.
  [[nodiscard]] int make_room(const Step& step) const {
    if (step.kind->appends) return order_.folder.make_way_to(step.file) ? 0 : errno;
    return order_.folder.create(step.file).is_open() ? 0 : errno;
  }

  json call(const Plugin& plugin, const Step& step) {
    // What the user has set is what the report is to tell of.
    const bool is_environment = step.kind->report == environment_report;
    for (const auto& [name, value] : is_environment ? users_ : Environment()) set(name, value);
    const Outcome outcome = find_entry(step.kind->call).call(plugin, step.arguments);
    for (const auto& [name, value] : is_environment ? ours_ : Environment()) set(name, value);
    return {{"code", outcome.code.value_or(SIT_OK)}};
  }

  json copy_logs(const Plugin& plugin, const Step& step) {
    int result = SIT_OK;
    std::string why;
    const std::vector<LogFolder> folders = log_folders(plugin, step);
    if (folders.empty()) return {{"nothing", "no log file is known"}};
    for (const LogFolder& folder : folders) {
      answers_.send('n', "copying the logs of " + folder.log);
      const int code = copy_log(plugin, step, folder);
      if (code != SIT_OK) why += (why.empty() ? "" : ", ") + folder.log;
      if (result == SIT_OK) result = code;
    }
    answers_.send('n', std::string());
    return {{"code", result}, {"why", why}};
  }

  int copy_log(const Plugin& plugin, const Step& step, const LogFolder& folder) {
    if (!order_.folder.make_way_to(folder.folder + "/")) return errno;
    std::vector<std::string> arguments = step.arguments;
    std::replace(arguments.begin(), arguments.end(), std::string("{log}"), folder.log);
    std::replace(arguments.begin(), arguments.end(), std::string("{log folder}"), folder.folder);
    int code = find_entry(step.kind->call).call(plugin, arguments).code.value_or(SIT_OK);
    copy_overwritten_logs(plugin, step, folder);
    ::rmdir(folder.folder.c_str());  // fails, and shall, when it holds copies
    // The database of the same name that is left out here has its own turn.
    if (step.names.empty() && code == SIT_DATABASE_LEFT_OUT) code = SIT_OK;
    return code;
  }

  const WorkerOrder& order_;
  Answers answers_;
  Descriptor temporary_;
  Environment users_;
  Environment ours_;
};

}  // namespace

void be_worker(const WorkerOrder& order) noexcept {
  try {
    leave_the_host(order);
    limit_files();
    Worker(order).run();
    ::_exit(0);
  } catch (const std::exception& error) {
    Answers(order.answers).send('f', std::string(error.what()));
  } catch (...) {
  }
  ::_exit(1);
}

}  // namespace host

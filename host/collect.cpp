#include "collect.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <memory>
#include <optional>
#include <set>

#include "bundle/archive.h"
#include "bundle/masking.h"
#include "page/page.h"
#include "report/file_findings.h"
#include "result/collection.h"
#include "result/manifest.h"
#include "result/progress.h"
#include "result/summary.h"
#include "support/failure.h"
#include "support/mounts.h"
#include "support/names.h"
#include "support/reserved_file.h"
#include "support/text.h"

namespace host {
namespace {

std::string host_name() {
  std::array<char, 256> name{};
  return ::gethostname(name.data(), name.size() - 1) == 0 && name[0] != '\0' ? name.data()
                                                                             : "machine";
}

std::string user_name(const Glance& glance) {
  const char* variable = std::getenv("USER");
  if (!glance.user.empty() || variable == nullptr) return glance.user;
  return variable;
}

std::string folder_name(const std::string& given_label, std::time_t now) {
  std::array<char, 32> time{};
  std::tm local{};
  ::localtime_r(&now, &local);
  static_cast<void>(std::strftime(time.data(), time.size(), "%Y%m%d-%H%M%S", &local));
  const std::string label = given_label.empty() ? "" : "-" + safe_name(given_label);
  return "sit-" + safe_name(host_name()) + label + "-" + time.data();
}

// What the user's variables say of paths, told from the root: workers live in another folder.
Environment absolute_environment() {
  Environment environment;
  for (const char* name : {"PHM", "DELVONINIT", "PELCFG", "WRKDIR", "JREHOME", "JAVA_HOME"}) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0' || *value == '/') continue;
    environment[name] = std::filesystem::absolute(value).string();
  }
  return environment;
}

// Where the installations are looked for: what the variables of the user say, unless options do.
std::vector<Environment> environments_of(const CollectOptions& options) {
  std::vector<Environment> environments;
  for (const std::string& directory : options.installations) {
    Environment environment = absolute_environment();
    environment["PHM"] = std::filesystem::absolute(directory).string();
    // The monitoring product belongs to the first one.
    if (!environments.empty()) environment["DELVONINIT"] = std::nullopt;
    environments.push_back(environment);
  }
  if (environments.empty()) environments.push_back(absolute_environment());
  if (!options.monitoring.empty()) {
    environments[0]["DELVONINIT"] = std::filesystem::absolute(options.monitoring).string();
  }
  return environments;
}

// The limits that the reports tell of are those of this run.
std::string note_on_limits() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur <= kLargestFile) return "";
  return "the file-size limit that the reports show is this run's own; before it was " +
         (limit.rlim_cur == RLIM_INFINITY ? "unlimited" : size_text(limit.rlim_cur));
}

std::filesystem::path temporary_folder() {
  std::error_code error;
  const std::filesystem::path named = std::filesystem::temp_directory_path(error);
  return error ? "/tmp" : named;
}

class Collecting {
 public:
  explicit Collecting(const CollectOptions& options)
      : options_(options),
        format_(find_archive_format(options.format)),
        masker_(options.is_unmasked
                    ? nullptr
                    : std::make_unique<Masker>(MaskRules::load(options.mask_rules))),
        findings_(FindingRules::load(options.findings)),
        extras_(load_captures(options.has_extras, options.capture_files)),
        settings_{options.settings.plugin, options.settings.verbose, load_settings()},
        progress_(options.progress),
        folder_(options.lists_steps ? temporary_folder() : options.output,
                folder_name(masker_ == nullptr ? options.label : masker_->masked(options.label),
                            started_)),
        supervisor_(settings_, signals_, folder_, options.limits, findings_, progress_),
        environments_(environments_of(options)),
        versions_{.environment = environments_[0], .is_independent = true} {}

  int run() {
    try {
      prepare();
      if (options_.lists_steps) {
        const int status = list_steps();
        folder_.remove_all();
        return status;
      }
      supervisor_.run({});
    } catch (const Failure&) {  // there is nothing to bring home
      supervisor_.finish();
      folder_.remove_all();
      throw;
    } catch (const std::exception& error) {
      supervisor_.give_up(std::string("sit itself failed: ") + error.what(), RowOutcome::kFailed);
    }
    supervisor_.finish();
    return finish();
  }

 private:
  // Finds the installations and lays out what there is to do.
  void prepare() {
    if (!options_.lists_steps) reserve();
    if (options_.selection.needs_installations()) discover();
    const Step glance = glance_step();
    if (options_.selection.wants(glance) && !options_.lists_steps) {
      supervisor_.add({.environment = {}, .steps = {glance}});
    }
    // While the installations are looked for, the machine itself can be told of.
    subjects_.push_back(machine_subject(environments_[0]));
    select(subjects_, options_.selection);
    if (!options_.lists_steps) supervisor_.add(subjects_[0]);
    if (!sought_.empty()) supervisor_.run(sought_);
    take_installations();
    Wishes wishes = options_.wishes;
    wishes.extras = extras_;
    for (Subject& subject : other_subjects(versions_, installations_, wishes)) {
      subjects_.push_back(std::move(subject));
    }
    if (is_discovered_) {
      check(options_.selection, subjects_);
      check_chosen(options_.selection, subjects_, installations_);
    }
    select(subjects_, options_.selection);
    if (options_.lists_steps) return;
    for (std::size_t i = 1; i < subjects_.size(); ++i) supervisor_.add(subjects_[i]);
  }

  // Summary and manifest are to be had even when the reports fill the disk.
  void reserve() {
    constexpr off_t kSummary = 32 << 10;
    constexpr off_t kManifest = 128 << 10;
    constexpr off_t kLeast = 16 << 10;
    const Room room(folder_.descriptor());
    const auto left = static_cast<off_t>(std::min<std::uint64_t>(room.bytes, INT64_MAX));
    if (room.is_short_for(0) || left < kLeast) {
      throw Failure("no space left on " + file_system_of(folder_.descriptor()));
    }
    summary_.emplace(folder_, kSummaryFile, std::min(kSummary, left / 8));
    manifest_.emplace(folder_, kManifestFile, std::min(kManifest, left / 4));
  }

  void discover() {
    for (std::size_t i = 0; i < environments_.size(); ++i) {
      const Step step =
          discovery_step(i + 1, options_.installations.empty() ? "" : options_.installations[i]);
      if (options_.selection.skips(step)) continue;
      supervisor_.add({.environment = environments_[i], .steps = {step}});
      sought_.push_back(step.id);
    }
  }

  void take_installations() {
    for (std::size_t i = 0; i < sought_.size(); ++i) {
      const auto& found = supervisor_.found(sought_[i]);
      // Where an installation is amiss, one must not be blamed for naming what it would have.
      is_discovered_ = is_discovered_ && found && found->missing.empty();
      if (!found) continue;
      if (versions_.is_independent && !found->installations.empty()) {
        versions_ = {.environment = environments_[i], .is_independent = false};
      }
      for (Installation installation : found->installations) {
        installation.environment = environments_[i];
        is_discovered_ = is_discovered_ && !installation.version.empty();
        if (!installation.version.empty()) installations_.push_back(installation);
      }
    }
  }

  // Returns the exit status.
  int list_steps() const {
    std::set<std::string> there;
    const auto list = [&there](const Step& step) {
      there.insert(step.kind->id);
      std::cout << printable(step.id + "  " + step.title +
                             (step.left_out.empty() ? "" : "  [" + step.left_out + "]"))
                << "\n";
    };
    list(discovery_step(1, ""));
    list(glance_step());
    for (const Subject& subject : subjects_) {
      for (const Step& step : subject.steps) list(step);
    }
    for (const StepKind& kind : step_kinds()) {
      const std::string why = why_absent(kind, installations_);
      if (there.contains(kind.id)) continue;
      std::cout << printable(kind.id + std::string("  does not apply: ") + why) << "\n";
    }
    return is_discovered_ ? kComplete : kPartial;
  }

  int finish() {
    if (!folder_.is_there()) throw Failure("somebody has removed " + folder_.path().string());
    folder_.remove_temporary();
    if (masker_ != nullptr) mask_names(folder_, *masker_);
    folder_.tidy_names();
    Contents contents = list(folder_);
    contents.goes_into_archive = format_ != nullptr;
    if (format_ == nullptr) contents.absent.clear();  // it is where it was
    const std::vector<FileFinding> in_files = findings_in(folder_, contents.files, findings_);
    if (masker_ != nullptr) mask_files(folder_, contents, *masker_, signals_);
    cut_to(caps(), folder_, contents);
    const Collection collection{
        .tool_version = SIT_VERSION,
        .plugin_version = supervisor_.plugin_version(),
        .label = options_.label,
        .host = host_name(),
        .user = user_name(supervisor_.glance()),
        .is_root = ::geteuid() == 0,
        .options = options_.as_given,
        .started = started_,
        .seconds = std::chrono::duration<double>(Clock::now() - start_).count(),
        .given_up = supervisor_.given_up(),
        .note = note_on_limits(),
        .rows = supervisor_.rows(),
        .commands = supervisor_.ended(),
        .glance = supervisor_.glance(),
        .contents = contents,
        .in_files = in_files,
        .masker = masker_.get()};
    const std::vector<Problem> problems = problems_of(collection);
    bool is_written = summary_->write(summary_of(collection, problems));
    is_written = write_manifest(collection, problems) && is_written;
    tell(collection, problems, is_written);
    const bool has_page = add_page(collection, problems);
    const bool may_go = is_written && contents.masking.failed.empty();
    const std::filesystem::path archive = may_go ? pack_folder(contents) : "";
    const std::filesystem::path made = archive.empty() ? folder_.path() : archive;
    std::cout << without_controls(made.string()) << "\n" << std::flush;
    if (!std::cout) progress_.say("Standard output does not take the path of the collection");
    const bool is_whole =
        may_go && has_page && (format_ == nullptr || !archive.empty()) && std::cout;
    const int status = is_whole && collection.is_complete() ? kComplete : kPartial;
    progress_.end(status, archive.empty() ? "folder" : "archive", made.string());
    return status;
  }

  [[nodiscard]] Caps caps() const {
    Caps caps = options_.caps;
    for (const Row& row : supervisor_.rows()) {
      if (row.step.cap > 0) caps.own[row.step.file] = row.step.cap;
    }
    return caps;
  }

  // The archive; the folder goes once that is whole. Empty where none is made.
  std::filesystem::path pack_folder(const Contents& contents) {
    if (format_ == nullptr) return {};
    // What is read first stands first.
    std::vector<std::string> files{kSummaryFile, kManifestFile};
    if (folder_.size_of(kPageFile) > 0) files.emplace_back(kPageFile);
    for (const std::string& file : contents.files) {
      if (std::ranges::count(files, file) == 0) files.push_back(file);
    }
    try {
      std::filesystem::path archive = pack(folder_, files, *format_, signals_);
      folder_.remove_all();
      if (folder_.is_there())
        progress_.say("The folder cannot be removed: " + folder_.path().string());
      return archive;
    } catch (const Failure& failure) {
      progress_.say(std::string("The folder stays as it is, for ") + failure.what());
      return {};
    }
  }

  [[nodiscard]] bool write_manifest(const Collection& collection,
                                    const std::vector<Problem>& problems) {
    constexpr std::array kDetails{Detail::kReadable, Detail::kDense, Detail::kRowsOnly};
    return std::any_of(kDetails.begin(), kDetails.end(), [&](Detail detail) {
      return manifest_->write(manifest_of(collection, problems, detail));
    });
  }

  // What cannot be shown in a browser stands in the files all the same.
  [[nodiscard]] bool add_page(const Collection& collection, const std::vector<Problem>& problems) {
    try {
      write_page(folder_, collection, problems);
      return true;
    } catch (const std::exception& error) {
      progress_.say(std::string("There is no ") + kPageFile + ": " + error.what());
      return false;
    }
  }

  // What the person at the machine should know without opening anything.
  void tell(const Collection& collection, const std::vector<Problem>& problems, bool is_written) {
    constexpr std::size_t kMostProblems = 10;
    for (std::size_t i = 0; i < std::min(problems.size(), kMostProblems); ++i) {
      progress_.say("  " + collection.masked(problems[i].text));
    }
    if (problems.size() > kMostProblems) {
      progress_.say("  and " + std::to_string(problems.size() - kMostProblems) + " more");
    }
    if (!is_written) {
      const int error = std::max(summary_->error(), manifest_->error());
      progress_.say("Summary or manifest could not be written: " + error_text(error) + ", on " +
                    file_system_of(folder_.descriptor()));
    }
    progress_.say(verdict_of(collection) + (is_written ? ". Read its summary.txt first." : "."));
  }

  const CollectOptions& options_;
  const ArchiveFormat* format_;     // null: the folder is what is made
  std::unique_ptr<Masker> masker_;  // null: secrets stay
  FindingRules findings_;
  std::vector<ExtraCapture> extras_;
  RunSettings settings_;
  std::time_t started_ = std::time(nullptr);
  Clock::time_point start_ = Clock::now();
  Progress progress_;
  SignalWatch signals_;  // before there is anything to leave behind
  OutputFolder folder_;
  Supervisor supervisor_;
  std::vector<Environment> environments_;
  std::vector<Installation> installations_;
  Subject versions_;
  std::vector<std::string> sought_;  // ids of the discoveries
  bool is_discovered_ = true;
  std::vector<Subject> subjects_;
  std::optional<ReservedFile> summary_;
  std::optional<ReservedFile> manifest_;
};

}  // namespace

int collect(const CollectOptions& options) { return Collecting(options).run(); }

}  // namespace host

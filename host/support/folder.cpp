#include "support/folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "support/failure.h"
#include "support/names.h"
#include "support/processes.h"
#include "support/text.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnerOnly = 0700;
constexpr mode_t kFileOfOwner = 0600;
constexpr const char* kTemporary = ".tmp";

Descriptor open_folder(int at, const std::string& name, int flags = 0) {
  return Descriptor(::openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
}

// Made by nobody else between its making and its opening.
bool is_ours(int fd) {
  struct stat status {};
  return ::fstat(fd, &status) == 0 && status.st_uid == ::geteuid() &&
         (status.st_mode & 0777U) == kOwnerOnly;
}

// Under this name, or with a number behind it.
Descriptor make_folder(int parent, std::string& name) {
  constexpr int kMostInOneSecond = 100;
  const std::string wanted = name;
  for (int i = 1; i <= kMostInOneSecond; ++i) {
    if (i > 1) name = wanted + "-" + std::to_string(i);
    if (::mkdirat(parent, name.c_str(), kOwnerOnly) == 0) {
      return open_folder(parent, name, O_NOFOLLOW);
    }
    if (errno != EEXIST) break;
  }
  return Descriptor();
}

void tidy_names_in(const fs::path& folder) {
  std::error_code error;
  fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, error);
  std::vector<fs::path> all;
  for (fs::directory_iterator entry(folder, error); entry != fs::directory_iterator();
       entry.increment(error)) {
    all.push_back(entry->path());
  }
  std::sort(all.begin(), all.end());
  // Those that may stay come first, so that none of them is taken by another.
  std::stable_partition(all.begin(), all.end(), [](const fs::path& path) {
    return safe_name(path.filename().string()) == path.filename().string();
  });
  Names names;
  for (const fs::path& path : all) {
    const fs::path tidy = path.parent_path() / names.take(path.filename().string());
    if (tidy != path) fs::rename(path, tidy, error);
    if (fs::is_directory(fs::symlink_status(tidy, error))) tidy_names_in(tidy);
  }
}

}  // namespace

OutputFolder::OutputFolder(const fs::path& parent, const std::string& name) : name_(name) {
  const auto fail = [&](int error) {
    throw Failure("cannot make the output folder " + (fs::absolute(parent) / name).string() + ": " +
                  error_text(error));
  };
  std::error_code error;
  fs::create_directories(parent, error);
  place_ = open_folder(AT_FDCWD, parent.string());
  if (!place_.is_open()) fail(errno);
  folder_ = make_folder(place_.get(), name_);
  if (!folder_.is_open()) fail(errno);
  made_ = fs::absolute(parent) / name_;
  if (!is_ours(folder_.get())) fail(EPERM);
  if (::mkdirat(folder_.get(), kTemporary, kOwnerOnly) != 0) {
    const int reason = errno;
    remove_all();
    fail(reason);
  }
  temporary_ = has_proc() ? "/proc/" + std::to_string(::getpid()) + "/fd/" +
                                std::to_string(folder_.get()) + "/" + kTemporary
                          : (made_ / kTemporary).string();
}

OutputFolder OutputFolder::existing(const fs::path& path) {
  OutputFolder folder;
  folder.made_ = path.has_filename() ? path : path.parent_path();
  folder.name_ = folder.made_.filename().string();
  folder.place_ = open_folder(AT_FDCWD, folder.made_.parent_path().string());
  folder.folder_ = open_folder(folder.place_.get(), folder.name_, O_NOFOLLOW);
  if (!folder.folder_.is_open()) throw Failure(path.string() + ": " + error_text(errno));
  return folder;
}

fs::path OutputFolder::way() const {
  return has_proc() ? fs::path("/proc/self/fd/" + std::to_string(folder_.get())) : made_;
}

fs::path OutputFolder::path() const {
  std::error_code error;
  const fs::path now = fs::read_symlink(way(), error);
  return error ? made_ : now;
}

fs::path OutputFolder::beside(const std::string& name) const {
  std::error_code error;
  const fs::path now = fs::read_symlink("/proc/self/fd/" + std::to_string(place_.get()), error);
  return (error ? made_.parent_path() : now) / name;
}

void OutputFolder::tidy_names() const { tidy_names_in(way()); }

bool OutputFolder::is_there() const {
  struct stat status {};
  return ::fstat(folder_.get(), &status) == 0 && status.st_nlink > 0;
}

bool OutputFolder::make_way_to(const std::string& file) const {
  for (std::size_t slash = file.find('/'); slash != std::string::npos;
       slash = file.find('/', slash + 1)) {
    const std::string folder = file.substr(0, slash);
    if (::mkdirat(folder_.get(), folder.c_str(), kOwnerOnly) == 0) continue;
    struct stat status {};
    if (errno != EEXIST) return false;
    if (::fstatat(folder_.get(), folder.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
    if (S_ISDIR(status.st_mode)) continue;
    errno = ENOTDIR;
    return false;
  }
  return true;
}

Descriptor OutputFolder::create(const std::string& file) const {
  if (!make_way_to(file)) return Descriptor();
  constexpr int kNew = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  return Descriptor(::openat(folder_.get(), file.c_str(), kNew, kFileOfOwner));
}

Descriptor OutputFolder::open(const std::string& file) const {
  constexpr int kNeverWaits = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  Descriptor opened(::openat(folder_.get(), file.c_str(), kNeverWaits));
  struct stat status {};
  if (opened.is_open() && (::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode))) {
    opened.reset();
  }
  return opened;
}

std::uint64_t OutputFolder::size_of(const std::string& file) const {
  struct stat status {};
  const bool is_there = ::fstatat(folder_.get(), file.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  return is_there ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void OutputFolder::remove(const std::string& file) const {
  static_cast<void>(::unlinkat(folder_.get(), file.c_str(), 0));
}

void OutputFolder::remove_temporary() const {
  std::error_code error;
  fs::remove_all(way() / kTemporary, error);
}

void OutputFolder::remove_all() const {
  std::error_code error;
  const fs::path where = path();
  for (const auto& entry : fs::directory_iterator(way(), error)) {
    fs::remove_all(entry.path(), error);
  }
  static_cast<void>(::rmdir(where.c_str()));
}

}  // namespace host

#include "bundle/archive.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "bundle/digest.h"
#include "bundle/stream.h"
#include "support/failure.h"
#include "support/mounts.h"
#include "support/text.h"

namespace host {
namespace {

constexpr mode_t kFileOfOwner = 0600;
constexpr std::size_t kBlock = 65536;

constexpr std::array kFormats{
    ArchiveFormat{"xz", "xz", "xz:compression-level=1"},
    ArchiveFormat{"gz", "gzip", "gzip:compression-level=6"},
    ArchiveFormat{"zst", "zstd", "zstd:compression-level=3"},
};

// Two new files beside the folder, under its name or with a number behind it: the archive, and what
// it is checked by.
class NewFiles {
 public:
  NewFiles(const OutputFolder& folder, const std::string& ending) : place_(folder.place().get()) {
    constexpr int kMost = 100;
    for (int i = 1; i <= kMost; ++i) {
      stem_ = folder.name() + (i == 1 ? "" : "-" + std::to_string(i));
      archive = make(stem_ + ending);
      if (archive.is_open()) sum = make(stem_ + ending + kSum);
      if (sum.is_open()) break;
      const int error = errno;
      if (archive.is_open()) remove(stem_ + ending);
      archive.reset();
      if (error != EEXIST) throw Failure(error_text(error));
    }
    if (!sum.is_open()) throw Failure("its name is taken");
    name_ = stem_ + ending;
  }
  NewFiles(const NewFiles&) = delete;
  NewFiles& operator=(const NewFiles&) = delete;
  ~NewFiles() {
    if (is_kept_ || !sum.is_open()) return;
    remove(name_);
    remove(name_ + kSum);
  }

  void keep() { is_kept_ = true; }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] const std::string& stem() const { return stem_; }

  Descriptor archive;
  Descriptor sum;

 private:
  static constexpr const char* kSum = ".sha256";

  [[nodiscard]] Descriptor make(const std::string& name) const {
    constexpr int kNew = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    return Descriptor(::openat(place_, name.c_str(), kNew, kFileOfOwner));
  }
  void remove(const std::string& name) const {
    static_cast<void>(::unlinkat(place_, name.c_str(), 0));
  }

  int place_;
  std::string stem_;
  std::string name_;
  bool is_kept_ = false;
};

class Writer {
 public:
  Writer(int fd, const ArchiveFormat& format) : stream_(::archive_write_new()) {
    check(::archive_write_add_filter_by_name(stream_.get(), format.filter), stream_.get());
    check(::archive_write_set_format_pax_restricted(stream_.get()), stream_.get());
    check(::archive_write_set_options(stream_.get(), format.options), stream_.get());
    check(::archive_write_open_fd(stream_.get(), fd), stream_.get());
  }

  void add(const std::string& name, int file, const SignalWatch& signals) {
    struct stat status {};
    if (::fstat(file, &status) != 0) throw Failure(error_text(errno));
    const Entry entry(::archive_entry_new());
    ::archive_entry_set_pathname(entry.get(), name.c_str());
    ::archive_entry_set_filetype(entry.get(), AE_IFREG);
    ::archive_entry_set_perm(entry.get(), kFileOfOwner);
    ::archive_entry_set_size(entry.get(), status.st_size);
    ::archive_entry_set_mtime(entry.get(), status.st_mtim.tv_sec, 0);
    check(::archive_write_header(stream_.get(), entry.get()), stream_.get());
    digest_.add({name.c_str(), name.size() + 1});
    std::array<char, kBlock> bytes;
    for (off_t left = status.st_size; left > 0;) {
      if (signals.take()) throw Failure("ended by a signal");
      const ssize_t got = ::read(file, bytes.data(), bytes.size());
      if (got <= 0) throw Failure("\"" + name + "\" has changed meanwhile");
      const auto count = static_cast<std::size_t>(std::min<off_t>(left, got));
      if (::archive_write_data(stream_.get(), bytes.data(), count) < 0) {
        check(ARCHIVE_FATAL, stream_.get());
      }
      digest_.add({bytes.data(), count});
      left -= static_cast<off_t>(count);
    }
  }

  // Returns the digest of names and contents.
  std::string close() {
    check(::archive_write_close(stream_.get()), stream_.get());
    return digest_.text();
  }

 private:
  Stream stream_;
  Digest digest_;
};

// The digest of what an archive gives back.
std::string read_back(int fd, const SignalWatch& signals) {
  const Stream stream = reading_stream();
  if (::lseek(fd, 0, SEEK_SET) != 0) throw Failure(error_text(errno));
  check(::archive_read_open_fd(stream.get(), fd, kBlock), stream.get());
  Digest digest;
  archive_entry* entry = nullptr;
  std::array<char, kBlock> bytes;
  for (;;) {
    const int result = ::archive_read_next_header(stream.get(), &entry);
    if (result == ARCHIVE_EOF) return digest.text();
    check(result, stream.get());
    const std::string_view name = ::archive_entry_pathname(entry);
    digest.add({name.data(), name.size() + 1});
    for (;;) {
      if (signals.take()) throw Failure("ended by a signal");
      const la_ssize_t got = ::archive_read_data(stream.get(), bytes.data(), bytes.size());
      if (got < 0) check(ARCHIVE_FATAL, stream.get());
      if (got <= 0) break;
      digest.add({bytes.data(), static_cast<std::size_t>(got)});
    }
  }
}

std::string digest_of_file(int fd) {
  Digest digest;
  std::array<char, kBlock> bytes;
  off_t at = 0;
  for (ssize_t got = 0; (got = ::pread(fd, bytes.data(), bytes.size(), at)) > 0; at += got) {
    digest.add({bytes.data(), static_cast<std::size_t>(got)});
  }
  return digest.text();
}

std::optional<unsigned> number_in(const char* variable) {
  const char* text = std::getenv(variable);
  if (text == nullptr) return std::nullopt;
  unsigned number = 0;
  const char* end = text + std::string_view(text).size();
  const auto [stop, error] = std::from_chars(text, end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

// Whoever called sudo is to send the file.
void give_to_caller(int fd) {
  const auto user = number_in("SUDO_UID");
  const auto group = number_in("SUDO_GID");
  if (::geteuid() != 0 || !user || !group) return;
  // That of a memory stick may know no owners and refuse; the archive is none the worse.
  [[maybe_unused]] const int refused = ::fchown(fd, *user, *group);
}

void finish(const NewFiles& made) {
  const std::string line = digest_of_file(made.archive.get()) + "  " + made.name() + "\n";
  if (::write(made.sum.get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    throw Failure(error_text(errno));
  }
  for (const int fd : {made.archive.get(), made.sum.get()}) {
    if (::fsync(fd) != 0 && errno != EINVAL) throw Failure(error_text(errno));
    give_to_caller(fd);
  }
}

}  // namespace

const ArchiveFormat* find_archive_format(const std::string& name) {
  if (name == "none") return nullptr;
  for (const ArchiveFormat& format : kFormats) {
    if (name == format.name) return &format;
  }
  throw UsageError("--format is xz, gz, zst or none, not \"" + name + "\"");
}

std::filesystem::path pack(const OutputFolder& folder, const std::vector<std::string>& files,
                           const ArchiveFormat& format, const SignalWatch& signals) {
  try {
    NewFiles made(folder, std::string(".tar.") + format.name);
    Writer writer(made.archive.get(), format);
    for (const std::string& file : files) {
      const Descriptor opened = folder.open(file);
      if (!opened.is_open()) throw Failure("\"" + file + "\" cannot be read");
      writer.add(made.stem() + "/" + file, opened.get(), signals);
    }
    const std::string written = writer.close();
    if (read_back(made.archive.get(), signals) != written) {
      throw Failure("what was written is not what can be read back");
    }
    finish(made);
    made.keep();
    return folder.beside(made.name());
  } catch (const Failure& failure) {
    throw Failure("no archive could be made: " + std::string(failure.what()) + ", on " +
                  file_system_of(folder.place().get()));
  }
}

}  // namespace host

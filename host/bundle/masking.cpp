#include "bundle/masking.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>

#include "mask/text_mask.h"
#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = std::size_t{256} << 10U;
constexpr const char* kMaskedFile = "masked.txt";
constexpr const char* kNotMasked = "NOT-MASKED.txt";

void write_all(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written <= 0) throw Failure(error_text(errno));
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

// Text has hardly any control characters.
bool is_binary(std::string_view beginning) {
  static constexpr std::string_view kOfText = "\t\n\r\v\f\b\033";
  const auto controls = std::count_if(beginning.begin(), beginning.end(), [](char c) {
    return static_cast<unsigned char>(c) < ' ' && kOfText.find(c) == std::string_view::npos;
  });
  constexpr std::size_t kOneIn = 20;
  return static_cast<std::size_t>(controls) * kOneIn > beginning.size();
}

// One file as it is masked. A new one is begun where the first mask stands.
class FileMask {
 public:
  FileMask(const OutputFolder& folder, const std::string& file, Masker& masker)
      : folder_(folder), file_(file), from_(folder.open(file)), mask_(masker) {
    if (!from_.is_open()) throw Failure(error_text(errno));
  }
  FileMask(const FileMask&) = delete;
  FileMask& operator=(const FileMask&) = delete;
  ~FileMask() {
    if (to_.is_open()) folder_.remove(new_name_);
  }

  [[nodiscard]] bool begins_as_binary() {
    std::array<char, 8192> beginning;
    const ssize_t got = ::pread(from_.get(), beginning.data(), beginning.size(), 0);
    return got > 0 && is_binary({beginning.data(), static_cast<std::size_t>(got)});
  }

  void run(const SignalWatch& signals) {
    const auto block = std::make_unique<std::array<char, kBlock>>();
    for (;;) {
      if (signals.take()) throw Failure("ended by a signal");
      const ssize_t got = ::read(from_.get(), block->data(), block->size());
      if (got < 0) throw Failure(error_text(errno));
      if (got == 0) break;
      mask_.take({block->data(), static_cast<std::size_t>(got)}, masked_);
      put();
    }
    mask_.finish(masked_);
    put();
    if (to_.is_open()) replace();
  }

  [[nodiscard]] const TextMask& mask() const { return mask_; }

 private:
  void put() {
    if (!to_.is_open() && mask_.has_changed()) {
      begin_new();
      copy_unchanged();
    }
    if (to_.is_open()) write_all(to_.get(), masked_);
    unchanged_ += masked_.size();
    masked_.clear();
  }

  // Under a name that nobody has taken.
  void begin_new() {
    constexpr int kMost = 100;
    for (int i = 1; !to_.is_open() && i <= kMost; ++i) {
      new_name_ = file_ + ".masked" + (i == 1 ? "" : std::to_string(i));
      to_ = folder_.create(new_name_);
      if (!to_.is_open() && errno != EEXIST) break;
    }
    if (!to_.is_open()) throw Failure(error_text(errno));
  }

  void copy_unchanged() {
    std::string bytes;
    for (std::uint64_t at = 0; at < unchanged_; at += bytes.size()) {
      bytes.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, unchanged_ - at)));
      const ssize_t got = ::pread(from_.get(), bytes.data(), bytes.size(), static_cast<off_t>(at));
      if (got <= 0) throw Failure(error_text(got < 0 ? errno : EIO));
      bytes.resize(static_cast<std::size_t>(got));
      write_all(to_.get(), bytes);
    }
  }

  void replace() {
    struct stat status {};
    if (::fstat(from_.get(), &status) == 0) {
      const std::array times{status.st_atim, status.st_mtim};
      static_cast<void>(::futimens(to_.get(), times.data()));
    }
    if (::renameat(folder_.descriptor(), new_name_.c_str(), folder_.descriptor(), file_.c_str()) !=
        0) {
      throw Failure(error_text(errno));
    }
    to_.reset();
  }

  const OutputFolder& folder_;
  std::string file_;
  Descriptor from_;
  Descriptor to_;
  std::string new_name_;
  TextMask mask_;
  std::string masked_;
  std::uint64_t unchanged_ = 0;  // bytes of the text that went by
};

bool is_kept(const std::string& file, const MaskRules& rules) {
  return std::any_of(rules.kept_binaries.begin(), rules.kept_binaries.end(),
                     [&file](const Pattern& name) { return RE2::PartialMatch(file, *name); });
}

// What masked.txt says of one file.
std::string told_of(const std::string& file, const TextMask& mask) {
  std::string text;
  for (const MaskPlace& place : mask.places()) {
    text += file + ":" + std::to_string(place.line) + " " + place.rule + "\n";
  }
  const std::uint64_t more = mask.masks() - mask.places().size();
  if (more > 0) text += file + ": and " + std::to_string(more) + " more\n";
  return text;
}

// What is in a folder comes before the folder itself.
void mask_names_in(const fs::path& folder, Masker& masker) {
  std::error_code error;
  fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, error);
  std::vector<fs::path> all;
  for (fs::directory_iterator entry(folder, error), end; entry != end; entry.increment(error)) {
    all.push_back(entry->path());
  }
  for (const fs::path& path : all) {
    if (fs::is_directory(fs::symlink_status(path, error))) mask_names_in(path, masker);
    const std::string name = path.filename().string();
    const std::string masked = masker.masked(name);
    if (masked != name) fs::rename(path, path.parent_path() / masked, error);
  }
}

}  // namespace

void mask_names(const OutputFolder& folder, Masker& masker) { mask_names_in(folder.way(), masker); }

void mask_files(const OutputFolder& folder, Contents& contents, Masker& masker,
                const SignalWatch& signals) {
  Masking& masking = contents.masking;
  masking.is_on = true;
  masking.list = kMaskedFile;
  Descriptor list = folder.create(masking.list);
  for (int i = 2; !list.is_open() && errno == EEXIST; ++i) {  // it has been masked before
    masking.list = "masked-" + std::to_string(i) + ".txt";
    list = folder.create(masking.list);
  }
  std::string file = masking.list;
  try {
    // Should this end in the middle, the folder says so.
    const Descriptor warning = folder.create(kNotMasked);
    if (!warning.is_open() || !list.is_open()) throw Failure(error_text(errno));
    write_all(warning.get(), "Not all secrets in this folder are masked. Do not send it.\n");
    write_all(list.get(), "Masks, by the file and line in which they stand, and the rule.\n\n");
    std::vector<std::string> files;
    for (const std::string& each : contents.files) {
      file = each;
      FileMask mask(folder, file, masker);
      const bool is_no_text = mask.begins_as_binary();
      if (is_no_text && !is_kept(file, masker.rules())) {
        contents.masking.no_texts.push_back(file);
        continue;
      }
      if (!is_no_text) mask.run(signals);
      write_all(list.get(),
                is_no_text ? file + ": no text, kept as it is\n" : told_of(file, mask.mask()));
      files.push_back(file);
    }
    contents.files = std::move(files);
    contents.files.insert(contents.files.begin(), masking.list);
    folder.remove(kNotMasked);
  } catch (const Failure& failure) {
    masking.failed = file + ": " + failure.what();
  }
  masking.counts.insert(masker.counts().begin(), masker.counts().end());
}

}  // namespace host

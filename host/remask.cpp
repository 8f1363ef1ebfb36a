#include "remask.h"

#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "bundle/archive.h"
#include "bundle/masking.h"
#include "bundle/unpack.h"
#include "collect.h"
#include "page/page.h"
#include "result/collection.h"
#include "result/manifest.h"
#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::string read_all(const OutputFolder& folder, const char* name) {
  std::ifstream file(folder.way() / name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

void replace(const OutputFolder& folder, const std::string& name, const std::string& text) {
  folder.remove(name);
  const Descriptor file = folder.create(name);
  const ssize_t written = file.is_open() ? ::write(file.get(), text.data(), text.size()) : -1;
  if (written != static_cast<ssize_t>(text.size())) throw Failure(name + ": " + error_text(errno));
}

// Summary and manifest say what is so by now.
void tell(const OutputFolder& folder, nlohmann::ordered_json manifest, Masker& masker,
          const Masking& masking) {
  mask_texts(manifest, masker);
  manifest["masked"] = true;
  manifest["masks"] = masks_of(masking);
  replace(folder, kManifestFile, manifest.dump(1) + "\n");
  std::string summary = read_all(folder, kSummaryFile);
  const std::size_t line = summary.find("\nSecrets ");
  if (line == std::string::npos) return;
  summary.replace(line, summary.find('\n', line + 1) - line,
                  "\nSecrets     masked afterwards; see " + masking.list);
  replace(folder, kSummaryFile, summary);
}

void mask(const OutputFolder& folder, Contents& contents, Masker& masker,
          const SignalWatch& signals) {
  auto manifest =
      nlohmann::ordered_json::parse(read_all(folder, kManifestFile), nullptr, /*exceptions=*/false);
  if (!manifest.is_object()) throw Failure(std::string(kManifestFile) + " in it cannot be read");
  // In a page quotes and the like are written otherwise: no rule would find all secrets there.
  folder.remove(kPageFile);
  mask_names(folder, masker);
  folder.tidy_names();
  contents = list(folder);
  std::erase(contents.files, kManifestFile);  // its texts are masked one by one
  mask_files(folder, contents, masker, signals);
  const Masking& masking = contents.masking;
  if (!masking.failed.empty()) throw Failure("not all of it could be masked: " + masking.failed);
  tell(folder, std::move(manifest), masker, masking);
  contents.files.emplace_back(kManifestFile);
  for (const std::string& file : masking.no_texts) {
    std::cerr << printable(file + " is no text, and could not be masked") << "\n";
  }
}

fs::path mask_archive(const RemaskOptions& options, Masker& masker, const SignalWatch& signals) {
  const ArchiveFormat* format = find_archive_format(options.format);
  std::string stem = options.bundle.filename().string();
  stem.resize(std::min(stem.find(".tar"), stem.size()));
  const OutputFolder folder(fs::absolute(options.bundle).parent_path(), stem + "-masked");
  try {
    unpack(options.bundle, folder, signals);
    folder.remove_temporary();
    Contents contents;
    mask(folder, contents, masker, signals);
    if (format == nullptr) return folder.path();
    fs::path made = pack(folder, contents.files, *format, signals);
    folder.remove_all();
    return made;
  } catch (const Failure&) {
    folder.remove_all();
    throw;
  }
}

}  // namespace

int remask(const RemaskOptions& options) {
  Masker masker(MaskRules::load(options.mask_rules));
  const SignalWatch signals;
  std::error_code error;
  fs::path made = fs::absolute(options.bundle);
  if (fs::is_directory(options.bundle, error)) {
    const OutputFolder folder = OutputFolder::existing(made);
    if (!fs::exists(folder.way() / kManifestFile)) {
      throw Failure(made.string() + " is no collection: it has no " + kManifestFile);
    }
    Contents contents;
    mask(folder, contents, masker, signals);
  } else {
    made = mask_archive(options, masker, signals);
  }
  std::cout << without_controls(made.string()) << "\n" << std::flush;
  return std::cout ? kComplete : kPartial;
}

}  // namespace host

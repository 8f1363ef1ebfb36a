// The version file, the launcher script and the init file of the monitoring product.
#include <array>
#include <cstring>

#include "support.h"

namespace {

void feed_version(std::string_view input) {
  fuzz::file("version", input);
  const fuzz::Record record = fuzz::installation(nullptr);
  getPelVerInfoFile(record.get(), fuzz::nowhere());
  AppendVerLogFile(record->version, -1, "log");
}

void feed_launcher(std::string_view input) {
  fuzz::write_file(fuzz::kLauncher, input);
  PHMVER* list = nullptr;
  getPelUnixVersions(&list, fuzz::nowhere());
  const fuzz::Record record{list};
}

void feed_delvon_init(std::string_view input) {
  const std::string init_file = fuzz::file("delvon.ini", input);
  std::array<char, 255> directory{};
  GetDelvonTarg(init_file.c_str(), directory.data());
  const fuzz::Record record = fuzz::installation(nullptr);
  record->initFile = ::strdup(init_file.c_str());
  CopyDelvon_Files(fuzz::scratch("copies").c_str(), record.get());
}

const fuzz::Target kTargets[] = {
    {"version", feed_version},
    {"launcher", feed_launcher, fuzz::Needs::kPrivateLauncher},
    {"delvon_init", feed_delvon_init},
};

}  // namespace

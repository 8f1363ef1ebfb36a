#include "sit/prodlic.h"

#include "prodlic/prodlic.h"

using namespace sit;

extern "C" {

int GetLicenseInfo(PHMVER* record) noexcept {
  return record == nullptr ? 0 : prodlic::write_configuration(*record);
}

int GenPelCfgName(char* destination, const PHMVER* record) noexcept {
  constexpr int kNothingNamed = 4;
  if (destination == nullptr || record == nullptr) return kNothingNamed;
  return prodlic::name_configuration(destination, *record);
}

int GetFileListInfo(const PHMVER* record) noexcept {
  if (record != nullptr) prodlic::list_installation(*record);
  return 0;
}

int GetCommonFilesListInfo() noexcept { return 0; }

int CopyDelvon_Files(const char* directory, const PHMVER* record) noexcept {
  if (directory != nullptr && record != nullptr) prodlic::copy_monitor_files(directory, *record);
  return 0;
}

}  // extern "C"

// The product configuration of one installation, and the files of the monitoring product.
#pragma once

#include "sit/pelver.h"

namespace sit::prodlic {

// As GetLicenseInfo, GenPelCfgName, GetFileListInfo and CopyDelvon_Files.
int write_configuration(const PHMVER& record) noexcept;
int name_configuration(char* destination, const PHMVER& record) noexcept;
void list_installation(const PHMVER& record) noexcept;
void copy_monitor_files(const char* directory, const PHMVER& record) noexcept;

}  // namespace sit::prodlic

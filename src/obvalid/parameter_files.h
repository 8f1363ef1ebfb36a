// The startup parameter files of brokers.
#pragma once

#include <string_view>
#include <utility>

#include "commutils/heap_text.h"

namespace sit::obvalid {

// The parameter files that were come across: paths, separated by ",".
class ParameterFiles {
 public:
  explicit ParameterFiles(HeapText list = nullptr) noexcept : list_(std::move(list)) {}

  // As Add_pf_name.
  void add(const char* directory, const char* value) noexcept;

  // Writes the section of the installation's own parameter file and of all those in the list, which
  // is then empty.
  void write_section(const char* directory) noexcept;

  [[nodiscard]] HeapText release() noexcept { return std::move(list_); }

 private:
  HeapText list_;
};

// As GetPFValue.
[[nodiscard]] HeapText parameter_file_in(const char* line) noexcept;

// As LogParameterFile.
int log_parameter_file(std::string_view directory, const char* file) noexcept;

}  // namespace sit::obvalid

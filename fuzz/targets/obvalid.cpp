// The plugins files, the admin server's script, check tools and the connection manager.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "support.h"

namespace {

constexpr const char* kVersion = "10.1B03";
using Value = std::array<char, 255>;

void feed_plugins9(std::string_view input) {
  ReadPluginsV9(fuzz::file("AdminServerPlugins.dat", input).c_str());
}

void feed_plugins10(std::string_view input) {
  ReadPluginsV10(fuzz::file("AdminServerPlugins.properties", input).c_str());
}

void feed_admin_script(std::string_view input) {
  fuzz::file("bin/peladsv", input);
  const fuzz::Record record = fuzz::installation(kVersion);
  pphm = record.get();
  std::free(GetAdmSrvWrkDir(kVersion));
  pphm = nullptr;
}

void feed_conmgr(std::string_view input) {
  Populate_Logs_Table_ConMgr(fuzz::file("conmgr.properties", input).c_str(), kVersion);
  List_log_table();
}

void feed_check_line(const char* line) {
  Value value{};
  SetObjectName(value.data(), line);
  Populate_Logs_Table(line, kVersion, value.data());
  ReadPropertyValue_From_Validation(line, "workDir", value.data());
  char* parameter_file = GetPFValue(line);
  Add_pf_name(value.data(), parameter_file);
  std::free(parameter_file);
}

// Thousands of lines a second; the whole tool below is a matter of milliseconds.
void feed_check_lines(std::string_view input) {
  while (!input.empty()) {
    const std::size_t length = std::min(input.find('\n'), input.size() - 1) + 1;
    feed_check_line(fuzz::text(input.substr(0, length)).get());
    input.remove_prefix(length);
  }
}

// The first character chooses among the kinds of brokers and whether only one is looked for.
void feed_check_tool(std::string_view input) {
  const unsigned choice = input.empty() ? 0 : static_cast<unsigned char>(input[0]);
  static const std::string tool = fuzz::tool_that_prints("output");
  fuzz::file("output", input);
  ValidateOBInstance(kVersion, tool.c_str(), choice % 2 == 0 ? "" : "orders", "",
                     scripts[choice / 2 % SIT_CHECK_TOOLS].type);
}

const fuzz::Target kTargets[] = {
    {"plugins9", feed_plugins9},         {"plugins10", feed_plugins10},
    {"admin_script", feed_admin_script}, {"conmgr", feed_conmgr},
    {"check_lines", feed_check_lines},   {"check_tool", feed_check_tool, fuzz::Needs::kChildren},
};

}  // namespace

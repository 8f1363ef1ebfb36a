// One check tool of an installation: running it and reading what it prints about its brokers.
#include <array>
#include <string_view>

#include "commfile.h"
#include "obvalid/obvalid.h"
#include "sit/commutils.h"
#include "sit/situtil.h"
#include "situtil/capture.h"
#include "situtil/command.h"

namespace {

constexpr int kNoMemory = 1;
constexpr int kNoTool = 10000;
constexpr std::string_view kHeader = "Configuration Information for";

bool contains(std::string_view line, std::string_view words) noexcept {
  return line.find(words) != std::string_view::npos;
}

// Room for any value of a line.
using ValueText = std::array<char, sit::LineText::kMaxLength + 1>;

// The broker that a header line names: what stands behind its last point, or else behind the
// header's words.
std::string_view object_name(std::string_view line) noexcept {
  if (line.ends_with('\n')) line.remove_suffix(1);
  if (line.size() >= 2) {
    const std::size_t point = line.rfind('.', line.size() - 2);
    if (point != std::string_view::npos) return sit::tail(line, point + 1);
  }
  const std::size_t header = line.find(kHeader);
  return header == std::string_view::npos ? std::string_view{}
                                          : sit::tail(line, header + kHeader.size());
}

// Goes through the lines of a check tool: notes what they tell of log and parameter files, and
// writes them into the report.
class BrokerLines {
 public:
  BrokerLines(const char* version, std::string_view type, const sit::LineText& broker) noexcept
      : version_(version),
        has_work_directories_(type == "AP" || type == "WP"),
        is_of_one_broker_(!broker.empty()) {
    stcopy(name_.data(), broker.c_str());
  }

  void take(const sit::Line& read) noexcept {
    const sit::LineText text = sit::line_text(read.text());
    const std::string_view line = text.view();
    if (line == "\n") return;
    look_for_failure(line);
    if (result_ != SIT_OK) return;
    if (!is_of_one_broker_ && line.starts_with('C') && contains(line, kHeader)) begin(text);
    if (has_work_directories_) {
      look_for_work_directory(text);
      look_for_parameter_file(text);
    }
    Populate_Logs_Table(text.c_str(), version_, name_.data());
    sit::log_bytes(read.bytes);
  }

  int finish() noexcept {
    list_parameter_file();
    return result_;
  }

 private:
  void look_for_failure(std::string_view line) noexcept {
    if (is_of_one_broker_ && contains(line, "Cannot find ")) result_ = SIT_NO_SUCH_BROKER;
    if (contains(line, "Cannot load property ")) result_ = SIT_PROPERTY_NOT_LOADED;
  }

  void begin(const sit::LineText& header) noexcept {
    LogMsg("\n\n");
    SetObjectName(name_.data(), header.c_str());
    knows_work_directory_ = false;
    list_parameter_file();
  }

  void look_for_work_directory(const sit::LineText& line) noexcept {
    if (knows_work_directory_) return;
    knows_work_directory_ = ReadPropertyValue_From_Validation(line.c_str(), "workDir",
                                                              work_directory_.data()) == SIT_OK;
    if (!knows_work_directory_) work_directory_[0] = '\0';
  }

  void look_for_parameter_file(const sit::LineText& line) noexcept {
    if (!line.view().starts_with("srvrStartupParam")) return;
    LogMsgV("ValidateOBInstace: srvrStartupParam : %s\n", line.c_str());
    parameter_file_.reset(GetPFValue(line.c_str()));
  }

  // Waits for the end of the broker's lines: its work directory may stand behind the parameters.
  void list_parameter_file() noexcept {
    Add_pf_name(work_directory_.data(), parameter_file_.get());
    parameter_file_.reset();
  }

  const char* version_;
  bool has_work_directories_;
  bool is_of_one_broker_;
  ValueText name_{};
  ValueText work_directory_{};
  bool knows_work_directory_ = false;
  sit::HeapText parameter_file_;
  int result_ = SIT_OK;
};

// The blanks are those of the tools' documented command line, empty places included.
sit::Command check_command(const char* tool, std::string_view broker,
                           std::string_view location) noexcept {
  sit::Command command;
  command.raw("  ").quoted(tool).raw(" ");
  if (broker.empty()) {
    command.raw("  ");
  } else {
    sit::BoundedText<sit::LineText::kMaxLength + 2> name;
    static_cast<void>(name.append({" ", broker}));
    command.raw(" -name ").quoted(name.view());
  }
  command.raw(location.empty() ? "  " : " -f ").quoted(location.empty() ? location : obroker);
  command.raw(" -v ");
  return command;
}

}  // namespace

extern "C" {

int SetObjectName(char* buffer, const char* line) noexcept {
  if (buffer == nullptr) return kNoMemory;
  const sit::HeapText copy = sit::duplicate(object_name(sit::text_of(line)));
  const sit::HeapText trimmed{StringTrim(copy.get())};
  sit::LineText name;
  const bool fits = trimmed != nullptr && sit::compose(name, "The name", {trimmed.get()});
  stcopy(buffer, name.c_str());
  return fits ? SIT_OK : kNoMemory;
}

int ValidateOBInstance(const char* version, const char* tool, const char* broker,
                       const char* location, const char* type) noexcept {
  if (sit::is_missing(tool)) return kNoTool;
  sit::LineText name;
  if (!sit::compose(name, "The broker name", {sit::text_of(broker)})) return SIT_NO_SUCH_BROKER;
  const sit::Command command = check_command(tool, name.view(), sit::text_of(location));
  if (!command.fits()) return SIT_NOT_FOUND;
  LogMsgV("Ready to execute %s\n", command.c_str());
  sit::TempFile output;
  if (!output.is_made()) return SIT_NOT_FOUND;
  LogMsgV("\nExecuting:\n%s\n\n", command.c_str());
  if (!sit::run_into(command.c_str(), output).has_started) return SIT_NOT_FOUND;
  BrokerLines lines{version, sit::text_of(type), name};
  sit::LineReader reader{output};
  for (sit::Line line; reader.next(line);) lines.take(line);
  return lines.finish();
}

}  // extern "C"

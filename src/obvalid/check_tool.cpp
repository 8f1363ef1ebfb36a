// One check tool of an installation: running it and reading what it prints about its brokers.
#include "commfile.h"
#include "commutils/text.h"
#include "commutils/views.h"
#include "obvalid/log_table.h"
#include "obvalid/obvalid.h"
#include "situtil/capture.h"
#include "situtil/command.h"

namespace sit::obvalid {
namespace {

constexpr int kNotKept = 1;
constexpr int kNoTool = 10000;
constexpr std::string_view kHeader = "Configuration Information for";

// Goes through the lines of a check tool: notes what they tell of log and parameter files, and
// writes them into the report.
class BrokerLines {
 public:
  BrokerLines(const Check& check, ParameterFiles& parameter_files) noexcept
      : version_(check.version),
        has_work_directories_(check.type == "AP" || check.type == "WP"),
        is_of_one_broker_(!check.broker.empty()),
        parameter_files_(parameter_files),
        name_(line_text(check.broker)) {}

  void take(const Line& read) noexcept {
    const LineText text = line_text(read.text());
    const std::string_view line = text.view();
    if (line == "\n") return;
    look_for_failure(line);
    if (result_ != SIT_OK) return;
    if (!is_of_one_broker_ && line.starts_with('C') && contains(line, kHeader)) begin(line);
    if (has_work_directories_) {
      look_for_work_directory(line);
      look_for_parameter_file(text);
    }
    note_log(line, version_, name_.view());
    log_text(read.bytes);
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

  void begin(std::string_view header) noexcept {
    log("\n\n");
    static_cast<void>(compose(name_, "The name", {broker_named_in(header)}));
    knows_work_directory_ = false;
    list_parameter_file();
  }

  void look_for_work_directory(std::string_view line) noexcept {
    if (knows_work_directory_) return;
    knows_work_directory_ = read_value(line, "workDir", work_directory_) == SIT_OK;
    if (!knows_work_directory_) work_directory_ = LineText{};
  }

  void look_for_parameter_file(const LineText& line) noexcept {
    if (!line.view().starts_with("srvrStartupParam")) return;
    log_verbose("ValidateOBInstace: srvrStartupParam : %s\n", line.c_str());
    parameter_file_ = parameter_file_in(line.c_str());
  }

  // Waits for the end of the broker's lines: its work directory may stand behind the parameters.
  void list_parameter_file() noexcept {
    parameter_files_.add(work_directory_.c_str(), parameter_file_.get());
    parameter_file_.reset();
  }

  const char* version_;
  bool has_work_directories_;
  bool is_of_one_broker_;
  ParameterFiles& parameter_files_;
  LineText name_;
  LineText work_directory_;
  bool knows_work_directory_ = false;
  HeapText parameter_file_;
  int result_ = SIT_OK;
};

// The blanks are those of the tools' documented command line, empty places included.
Command command_of(const Check& check) noexcept {
  Command command;
  command.raw("  ").quoted(check.tool).raw(" ");
  if (check.broker.empty()) {
    command.raw("  ");
  } else {
    BoundedText<LineText::kBytes + 1> name;
    static_cast<void>(name.append({" ", check.broker}));
    command.raw(" -name ").quoted(name.view());
  }
  command.raw(check.location ? " -f " : "  ").quoted(check.location.value_or("")).raw(" -v ");
  return command;
}

// What a value begins behind: the key and two characters more, or the parenthesis before the first
// one that closes.
std::string_view value_behind(std::string_view line, std::size_t key_length) noexcept {
  constexpr std::size_t kSeparatorLength = 2;
  const std::string_view before = head(line, line.find(')'));
  const std::size_t parenthesis = before.rfind('(');
  const bool is_enclosed = before.size() < line.size() && parenthesis != std::string_view::npos;
  return is_enclosed ? tail(before, parenthesis + 1) : tail(line, key_length + kSeparatorLength);
}

}  // namespace

std::string_view broker_named_in(std::string_view header) noexcept {
  if (header.ends_with('\n')) header.remove_suffix(1);
  const std::size_t point =
      header.size() < 2 ? std::string_view::npos : header.rfind('.', header.size() - 2);
  if (point != std::string_view::npos) return trimmed(tail(header, point + 1));
  const std::size_t words = header.find(kHeader);
  if (words == std::string_view::npos) return {};
  return trimmed(tail(header, words + kHeader.size()));
}

int read_value(std::string_view line, std::string_view key, LineText& value) noexcept {
  if (!line.starts_with(key)) return SIT_FAILED;
  return compose(value, "The value", {trimmed(value_behind(line, key.size()))}) ? SIT_OK : kNotKept;
}

int run_check(const Check& check, ParameterFiles& parameter_files) noexcept {
  if (is_missing(check.tool)) return kNoTool;
  if (LineText name; !compose(name, "The broker name", {check.broker})) return SIT_NO_SUCH_BROKER;
  const Command command = command_of(check);
  if (!command.fits()) return SIT_NOT_FOUND;
  log_verbose("Ready to execute %s\n", command.c_str());
  TempFile output;
  if (!output.is_made()) return SIT_NOT_FOUND;
  log_verbose("\nExecuting:\n%s\n\n", command.c_str());
  if (!run_into(command.c_str(), output).has_started) return SIT_NOT_FOUND;
  BrokerLines lines{check, parameter_files};
  LineReader reader{output};
  for (Line line; reader.next(line);) lines.take(line);
  return lines.finish();
}

}  // namespace sit::obvalid

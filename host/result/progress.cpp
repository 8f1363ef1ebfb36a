#include "result/progress.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

using nlohmann::json;

const std::string kClearLine = "\r\033[K";

std::size_t terminal_width() {
  constexpr std::size_t kUsual = 80;
  winsize size{};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

bool can_draw() {
  const char* terminal = std::getenv("TERM");
  return ::isatty(STDERR_FILENO) != 0 && terminal != nullptr && *terminal != '\0' &&
         std::string(terminal) != "dumb";
}

Progress::Form form_of(const std::string& name) {
  if (name == "json") return Progress::Form::kJson;
  if (name == "plain") return Progress::Form::kPlain;
  if (name == "auto") return can_draw() ? Progress::Form::kLive : Progress::Form::kPlain;
  throw UsageError("--progress is auto, plain or json, not \"" + printable(name) + "\"");
}

std::string whole_seconds(double seconds) {
  return std::to_string(static_cast<long>(seconds)) + " s";
}

std::string line_of(const json& object) {
  return object.dump(-1, ' ', false, json::error_handler_t::replace) + "\n";
}

// Whether a block can be written to standard error without waiting for whoever reads it.
bool is_writable() {
  pollfd watched{STDERR_FILENO, POLLOUT, 0};
  return ::poll(&watched, 1, 0) == 1 && (watched.revents & POLLOUT) != 0;
}

// The row's section where it has any, else what it is about.
std::string place_of(const Progress::Running& row) {
  return row.section.empty() ? row.title : row.id + ": " + row.section;
}

}  // namespace

Progress::Progress(const std::string& form) : form_(form_of(form)) {}

void Progress::erase() {
  if (is_drawn_) print(kClearLine);
  is_drawn_ = false;
}

// What nobody reads is dropped: the collection waits for no reader.
void Progress::print(const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const std::size_t size = std::min<std::size_t>(text.size() - done, PIPE_BUF);
    const ssize_t written = is_writable() ? ::write(STDERR_FILENO, &text[done], size) : -1;
    if (written <= 0) return;
    done += static_cast<std::size_t>(written);
  }
}

void Progress::say(const std::string& text) {
  erase();
  print(form_ == Form::kJson ? line_of({{"event", "message"}, {"text", text}})
                             : printable(text) + "\n");
}

void Progress::show(const std::vector<Running>& running) {
  constexpr auto kRedraw = std::chrono::milliseconds(200);
  constexpr auto kTellAgain = std::chrono::seconds(1);
  const auto now = std::chrono::steady_clock::now();
  if (running.empty() || now - last_ < (form_ == Form::kLive ? kRedraw : kTellAgain)) return;
  last_ = now;
  if (form_ == Form::kJson) {
    json rows = json::array();
    for (const Running& row : running) {
      rows.push_back({{"id", row.id}, {"section", row.section}, {"seconds", row.seconds}});
      if (row.command.empty()) continue;
      rows.back()["command"] = {
          {"command", row.command}, {"seconds", row.command_seconds}, {"limit", row.command_limit}};
    }
    print(line_of({{"event", "running"}, {"done", done_}, {"of", rows_}, {"rows", rows}}));
  }
  if (form_ != Form::kLive) return;
  // Where several are at work, the one that holds the run up.
  const Running& row =
      *std::max_element(running.begin(), running.end(), [](const Running& a, const Running& b) {
        return std::pair(a.command_seconds, a.seconds) < std::pair(b.command_seconds, b.seconds);
      });
  const std::string done = std::to_string(done_) + " of " + std::to_string(rows_) + ": ";
  // Long names are cut off at the end, so what changes stands before them.
  const std::string line = row.command.empty()
                               ? done + "(" + whole_seconds(row.seconds) + ") " + place_of(row)
                               : done + "(" + whole_seconds(row.command_seconds) + " of " +
                                     whole_seconds(row.command_limit) + ") " + row.command +
                                     " in " + place_of(row);
  print(kClearLine + fitted(line, terminal_width() - 1));
  is_drawn_ = true;
}

void Progress::finished(const Row& row) {
  ++done_;
  if (form_ == Form::kJson) {
    print(line_of({{"event", "row"},
                   {"id", row.step.id},
                   {"title", row.step.title},
                   {"outcome", text_of(row.outcome)},
                   {"why", row.why},
                   {"seconds", row.seconds},
                   {"bytes", row.bytes},
                   {"file", row.step.file}}));
    return;
  }
  // On a terminal, only what went wrong stays to be read.
  if (form_ == Form::kLive && !is_fault(row.outcome)) return;
  say(row.step.title + ": " + text_of(row.outcome) + (row.why.empty() ? "" : ", " + row.why) +
      " (" + seconds_text(row.seconds) + " s)");
}

void Progress::ended(const EndedCommand& command) {
  if (form_ == Form::kJson) {
    print(line_of({{"event", "command"},
                   {"command", command.command_line},
                   {"seconds", command.seconds},
                   {"row", command.row}}));
    return;
  }
  say("Ending \"" + command.command_line + "\" after " + seconds_text(command.seconds) + " s");
}

void Progress::end(int status, const char* kind, const std::string& path) {
  erase();
  if (form_ == Form::kJson) {
    print(line_of({{"event", "end"}, {"status", status}, {kind, path}}));
  }
}

}  // namespace host

// What a worker tells its supervisor from within signal handlers.
#pragma once

namespace host {

// Where the handlers report to, and what they look at.
struct SignalReports {
  int answers = -1;    // a pipe
  int folder = -1;     // of the collection
  int temporary = -1;  // where this worker's temporary files are
};

// From now on each child that ends and each crash becomes a line:
//   c PID CODE STATUS SHORT SIZE NAME   a child ended: code and status as waitid has them, whether
//                                       there was no room for its output or for a copy of it, how
//                                       long the report was, what its program is called
//   x LIBRARY                           this process ends before its time, perhaps in a product's
//   library
// May be called again where a product may have changed what signals do.
void report_signals(const SignalReports& where);

// The report that is being written, by its path in the folder. The text must stay.
void set_current_report(const char* file) noexcept;

}  // namespace host

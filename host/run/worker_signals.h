// What a worker tells its supervisor from within signal handlers.
#pragma once

namespace host {

// From now on each child that ends and each crash becomes a line on `answers`:
//   c PID CODE STATUS SHORT SIZE   a child ended: code and status as waitid has them, whether the
//                                  folder's file system was short of room, how long the report was
//   x LIBRARY                      this process ends before its time, perhaps in a product's
//   library
void report_signals(int answers, int folder);

// The report that is being written, by its path in the folder. The text must stay.
void set_current_report(const char* file) noexcept;

}  // namespace host

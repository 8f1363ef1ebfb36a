#include "sit/situtil.h"

#include "file_status.h"
#include "files.h"
#include "sit/codes.h"
#include "situtil/capture.h"
#include "situtil/copy.h"
#include "situtil/listing.h"
#include "situtil/start.h"
#include "situtil/temp_file.h"

using namespace sit;

extern "C" {

int execcmd(const char* command, const char* output) noexcept {
  if (command == nullptr || output == nullptr) return SIT_FAILED;
  return run({.command = command, .output = output}).result;
}

void LogCmdOutput(const char* command, const char* output) noexcept {
  output == nullptr ? log_output_of(command) : keep_output_of(command, output);
}

char* GetTempFile() noexcept { return temp_file_name().release(); }

int ReadTextFile(const char* path) noexcept { return log_file(path); }

unsigned int FileExists(const char* path) noexcept { return file_mode(path); }

int CopyEndOfFile(const char* source, const char* destination, int trim, int append) noexcept {
  return copy_end_of_file({.source = source,
                           .destination = destination,
                           .trims = trim != 0,
                           .existing = append != 0 ? Existing::kAppend : Existing::kTruncate});
}

int ListFiles(const char* directory, int recursive) noexcept {
  list_files(directory, recursive != 0 ? Depth::kAll : Depth::kOne);
  return 0;
}

void MyCopy(const char* source, const char* destination) noexcept {
  copy_by_command(source, destination);
}

}  // extern "C"

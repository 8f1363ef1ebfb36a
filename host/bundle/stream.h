// Owners of what libarchive hands out.
#pragma once

#include <archive.h>
#include <archive_entry.h>

#include <cerrno>
#include <memory>

#include "support/failure.h"
#include "support/text.h"

namespace host {

struct FreeArchive {
  void operator()(archive* stream) const { ::archive_free(stream); }
  void operator()(archive_entry* entry) const { ::archive_entry_free(entry); }
};
using Stream = std::unique_ptr<archive, FreeArchive>;
using Entry = std::unique_ptr<archive_entry, FreeArchive>;

// Throws Failure for what is worse than a warning.
inline void check(int result, archive* stream) {
  if (result >= ARCHIVE_WARN) return;
  const char* text = ::archive_error_string(stream);
  const int error = ::archive_errno(stream);
  if (error == ENOSPC || text == nullptr) throw Failure(error_text(error));
  throw Failure(text);
}

// A stream that reads tar archives of any compression.
inline Stream reading_stream() {
  Stream stream(::archive_read_new());
  check(::archive_read_support_filter_all(stream.get()), stream.get());
  check(::archive_read_support_format_tar(stream.get()), stream.get());
  return stream;
}

}  // namespace host

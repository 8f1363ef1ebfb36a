// The files of an archive, one after the other.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace host {

// Takes a part of a file; false when it wants no more.
using TakeBytes = std::function<bool(std::string_view bytes)>;

// Takes a file by its path below the collection's folder; what it returns takes the file's bytes.
// An empty one leaves the file out.
using TakeFile = std::function<TakeBytes(const std::string& file)>;

// Hands out the files of an archive until `is_enough` says so. Throws Failure, naming the archive,
// for one that is cut short, or holds anything but files in one folder.
void read_archive(const std::filesystem::path& archive, const TakeFile& take,
                  const std::function<bool()>& is_enough);

}  // namespace host

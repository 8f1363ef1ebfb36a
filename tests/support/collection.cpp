#include "support/collection.h"

#include <chrono>

namespace test {

json Collected::row(const std::string& id) const {
  for (const auto& row : manifest.value("rows", json::array())) {
    if (row.at("id") == id) return row;
  }
  return {};
}

std::string Collected::outcome(const std::string& id) const {
  const json found = row(id);
  return found.is_null() ? "no such row" : found.at("outcome").get<std::string>();
}

std::string Collected::why(const std::string& id) const {
  const json found = row(id);
  return found.is_null() ? "no such row" : found.at("why").get<std::string>();
}

Collected CollectTest::collect(const std::string& options, const std::string& before) const {
  std::error_code missing;
  for (const auto& entry : fs::directory_iterator(path("out"), missing)) fs::remove_all(entry);
  const auto start = std::chrono::steady_clock::now();
  const bool has_format = options.find("--format") != std::string::npos;
  const bool has_extras = options.find("extra") != std::string::npos;
  const Ran ran = run("(" + before + "\n" + HOST + " collect --output " + path("out") + " " +
                      options + (has_format ? "" : " --format none") +
                      (has_extras ? "" : " --no-extras") + " 2>" + path("said") + ")");
  Collected collected{.status = ran.status, .printed = ran.output, .said = read_file(path("said"))};
  collected.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  for (const auto& entry : fs::directory_iterator(path("out"), missing)) {
    collected.folder = entry.path();
  }
  if (fs::exists(collected.folder / "manifest.json")) {
    collected.summary = read_file(collected.folder / "summary.txt");
    collected.manifest = json::parse(read_file(collected.folder / "manifest.json"));
  }
  return collected;
}

std::string CollectTest::sample_options(const std::string& kind) const {
  EXPECT_EQ(run(EXAMPLES "/install " + kind + " " + sample()).status, 0);
  return "--installation " + sample() + "/pel --installation " + sample() + "/pel9 --monitoring " +
         sample() + "/delvon/delvon.ini --netscape " + sample() + "/netscape,intranet --netscape " +
         sample() + "/netscape,shop --apache " + sample() + "/apache --capture 'echo captured' " +
         "--capture-library " CAPTURED_LIBRARY ",leave_a_file";
}

}  // namespace test

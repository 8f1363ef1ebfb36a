// The archive that "sit collect" makes of a collection.

#include "support/collection.h"

namespace test {
namespace {

class Bundle : public CollectTest {
 protected:
  // Unpacks the archive whose path was printed into path("unpacked"); returns the names in it.
  [[nodiscard]] std::string unpack(const Collected& made) const {
    return run("cd " + path("") + " && rm -rf unpacked && mkdir unpacked && tar xvf " +
               made.archive() + " -C " + path("unpacked") +
               " --strip-components 1 | sed 's:^[^/]*/::'")
        .output;
  }
  [[nodiscard]] std::string left() const { return run("ls -A " + path("out")).output; }
};

TEST_F(Bundle, HoldsWhatTheFolderHeldInEachFormat) {
  const std::string lasting =
      " --only capture --capture 'seq 50000; mkdir d; date > d/left; chmod 0 d'";
  for (const std::string format : {"xz", "gz", "zst"}) {
    const Collected made = collect("--format " + format + lasting);
    EXPECT_EQ(made.status, 0) << made.said;
    const std::string archive = made.archive();
    EXPECT_THAT(archive, EndsWith(".tar." + format));
    const std::string name = fs::path(archive).filename();
    EXPECT_EQ(left(), name + "\n" + name + ".sha256\n") << "the folder goes";
    EXPECT_EQ(run("cd " + path("out") + " && sha256sum -c *.sha256").output, name + ": OK\n");
    EXPECT_EQ(run("stat -c %a " + path("out") + "/*").output, "600\n600\n");
    EXPECT_EQ(unpack(made),
              "summary.txt\nmanifest.json\nindex.html\nmasked.txt\n"
              "capture-seq/d/left\ncapture-seq/index.txt\ncapture-seq/output.txt\n");
    EXPECT_EQ(without_header(read_file(path("unpacked/capture-seq/output.txt"))),
              run("seq 50000").output + "\n==End of Log==\n");
  }
  const Collected refused = collect("--format tgz");
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.said, "sit: --format is xz, gz, zst or none, not \"tgz\"\n");
}

TEST_F(Bundle, LongFilesAreCutAndSaidAndLinksStayOut) {
  write_file(path("foreign"), repeat("of somebody else\n", 5000));
  const std::string capture =
      " --only capture --capture 'seq 30000; mkfifo f; ln -s /etc/passwd l; ln " + path("foreign") +
      " hard'";
  const std::tuple<std::string, std::string, std::uintmax_t> caps[] = {
      {"--max-file 20000", "capture-seq/hard:", 40000 + 300},
      {"--max-total 64KiB", "capture-seq/output.txt:", 64 << 10}};
  for (const auto& [cap, cut, most] : caps) {
    const Collected made = collect("--format gz " + cap + capture);
    EXPECT_EQ(made.status, 1);
    EXPECT_EQ(unpack(made),
              "summary.txt\nmanifest.json\nindex.html\nmasked.txt\n"
              "capture-seq/hard\ncapture-seq/index.txt\ncapture-seq/output.txt\n");
    const fs::path folder = path("unpacked");
    EXPECT_LE(fs::file_size(folder / "capture-seq/output.txt") +
                  fs::file_size(folder / "capture-seq/hard"),
              most);
    const auto manifest = json::parse(read_file(folder / "manifest.json"));
    EXPECT_EQ(manifest.at("complete"), false);
    EXPECT_EQ(manifest.at("cuts").size(), 2U);
    for (const auto& one : manifest.at("cuts")) {
      const std::string text = read_file(folder / one.at("file").get<std::string>());
      const std::string line = "\n[sit: " + one.at("left_out").dump() + " bytes of " +
                               one.at("bytes").dump() + " are left out here]\n";
      EXPECT_THAT(text, HasSubstr(line)) << line;
    }
    const std::string summary = read_file(folder / "summary.txt");
    EXPECT_THAT(summary,
                testing::AllOf(HasSubstr(cut), HasSubstr("capture-seq/f is not in the archive"),
                               HasSubstr("capture-seq/l is not in the archive"),
                               HasSubstr("0 of 4 rows not ok; 2 files cut")));
    const std::string output = read_file(folder / "capture-seq/output.txt");
    EXPECT_THAT(output, HasSubstr("\n1\n2\n3\n"));
    EXPECT_THAT(output, EndsWith("\n30000\n\n==End of Log==\n"));
  }
  EXPECT_EQ(fs::file_size(path("foreign")), 85000U) << "what has another name is not cut there";
}

TEST_F(Bundle, TakenNameStaysWhoseItIs) {
  const Collected made =
      collect("--format gz --only capture --capture 'ln -s / ${PWD%/*}.tar.gz.sha256'");
  EXPECT_EQ(made.status, 0) << made.said;
  EXPECT_THAT(made.printed, EndsWith("-2.tar.gz\n"));
  EXPECT_EQ(run("ls " + path("out") + " | wc -l").output, "3\n");
  EXPECT_EQ(run("tar tf " + made.archive() + " | head -n 1").output,
            fs::path(made.archive()).stem().stem().string() + "/summary.txt\n");
}

TEST_F(Bundle, FolderStaysWhereNoArchiveCanBeMade) {
  const std::string said = path("said");
  const Ran ended =
      run("(" HOST " collect --progress plain --only capture --unmasked --max-file 1G --output " +
          path("out") + " --capture 'head -c 200000000 /dev/urandom' 2>" + said +
          " & while ! grep -qs summary.txt " + said + "; do sleep 0.1; done; kill $! && wait $!)");
  EXPECT_EQ(ended.status, 1);
  EXPECT_THAT(
      read_file(said),
      HasSubstr("The folder stays as it is, for no archive could be made: ended by a signal"));
  EXPECT_EQ(path("out/") + left(), ended.output) << "nothing half made";

  if (!mount_small(path("out"), "3m")) GTEST_SKIP() << "needs a mount namespace";
  const Collected full = collect(
      "--format xz --unmasked --only capture --capture 'head -c 800K /dev/urandom; "
      "head -c 800K /dev/urandom > left'");
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.printed, full.folder.string() + "\n");
  EXPECT_THAT(full.said, HasSubstr("no archive could be made: No space left on device, on " +
                                   path("out") + " (tmpfs)\n"));
  EXPECT_EQ(left(), full.folder.filename().string() + "\n");
  EXPECT_EQ(full.manifest.at("complete"), true);
}

TEST_F(Bundle, ShowsItsSummaryRowsAndSections) {
  const std::string options =
      "--only security --only capture --capture 'seq 3; printf \"\\\\033[1m\"' --installation " +
      sample() + "/pel --label x ";
  static_cast<void>(sample_options());
  for (const std::string format : {"none", "xz"}) {
    const Collected made = collect(options + "--format " + format);
    const std::string bundle = made.archive();
    const auto shown = [&bundle](const std::string& what) {
      return run(HOST " show " + bundle + " " + what).output;
    };
    std::string folder = bundle;
    if (format == "xz") {
      static_cast<void>(unpack(made));
      folder = path("unpacked");
    }
    const std::string security = read_file(folder + "/10.1B/security.txt");
    EXPECT_EQ(shown(""), read_file(folder + "/summary.txt"));
    EXPECT_EQ(shown("10.1B/security"), security);
    EXPECT_EQ(shown("10.1B/security.txt"), security);
    EXPECT_EQ(shown("capture-seq"), read_file(folder + "/capture-seq/output.txt"));
    EXPECT_EQ(shown("keys"), security.substr(security.find("Keys\n====")));
    const std::string certificates = shown("CERTIF");
    EXPECT_THAT(certificates, StartsWith("Certificates\n===="));
    EXPECT_EQ(certificates + shown("keys"), security.substr(security.find("Certificates\n===")));
    EXPECT_EQ(shown("nosuch"), "sit: \"nosuch\" is no row, file or section of it\n");
    EXPECT_EQ(run(HOST " show " + bundle + " e").status, 2) << "more than one";
  }
  write_file(path("a.tar.xz"), "no archive");
  for (const std::string none : {"a.tar.xz", "tmp", "gone"}) {
    const Ran ran = run(HOST " show " + path(none));
    EXPECT_EQ(ran.status, 3);
    EXPECT_THAT(ran.output, StartsWith("sit: " + path(none)));
  }
}

}  // namespace
}  // namespace test

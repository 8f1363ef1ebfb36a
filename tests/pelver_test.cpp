#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "support/sit_test.h"

namespace test {
namespace {

std::string text_of(const char* text) { return text == nullptr ? "(null)" : text; }

PHMVER record_with(const char* version, unsigned flags, PHMVER* next = nullptr) {
  PHMVER record{};
  record.version = const_cast<char*>(version);
  record.flags = flags;
  record.next = next;
  return record;
}

class Discovery : public SitTest {
 protected:
  void SetUp() override {
    SitTest::SetUp();
    installation_ = path("pel");
    fs::create_directory(installation_);
  }

  std::string discover() const {
    set_environment("PHM", installation_.c_str());
    return taken(GetPhmVers());
  }
  void put_library(const std::string& file) const {
    fs::create_directory(installation_ + "/bin");
    fs::copy_file(file, library(), fs::copy_options::overwrite_existing);
  }
  [[nodiscard]] std::string library() const { return installation_ + "/bin/versioninfo.dll"; }
  [[nodiscard]] std::string version_file() const { return installation_ + "/version"; }
  [[nodiscard]] std::string using_phm() const { return "Using PHM: " + installation_ + "\n"; }

  std::string installation_;
};

TEST_F(Discovery, VersionFilesSelectorsAndTexts) {
  const std::string missing = "Unable to open version file " + version_file() + "\n\n";
  EXPECT_EQ(discover(), using_phm() + missing);
  EXPECT_EQ(pphm->version, nullptr);
  fs::create_directory(version_file());
  EXPECT_EQ(discover(), using_phm() + "Unable to find version string in ''\nExtracted from " +
                            version_file() + "\n\n");
  fs::remove(version_file());
  const auto numbers = [](const PHMVER& record) {
    return " " + std::to_string(record.major) + " " + std::to_string(record.minor);
  };
  expect_rows("pelver", "version file", [&](const Row& row) {
    write_file(version_file(), row.text(0));
    pphm = nullptr;
    std::string said = discover();
    const std::string end = "'\nExtracted from " + version_file() + "\n\n";
    const std::size_t quote = pphm->version == nullptr ? 0 : 1;
    EXPECT_THAT(said, StartsWith(using_phm()));
    EXPECT_THAT(said, EndsWith(end.substr(quote)));
    said.resize(said.size() - end.size() + quote);
    EXPECT_EQ(text_of(pphm->fullVersion), text_of(pphm->version));
    EXPECT_STREQ(pphm->maintLevel, "");
    EXPECT_EQ(pphm->dir, installation_);
    return said.substr(using_phm().size()) + " => " + text_of(pphm->version) + numbers(*pphm);
  });
  expect_rows("pelver", "selector", [](const Row& row) {
    std::string accepted;
    for (const unsigned kind : {0U, 1U, 2U, 4U, 32U, 64U, 3U}) {
      const PHMVER record = record_with(nullptr, kind);
      accepted += std::to_string(IsCorrectProduct(&record, row.number(0)));
    }
    return accepted;
  });
  expect_rows("pelver", "release", [](const Row& row) {
    std::string version = row.text(0);
    RmPatchInfoPHM(version.data());
    return text_of(version.c_str());
  });
  expect_rows("pelver", "numbers", [&](const Row& row) {
    PHMVER record{};
    record.major = record.minor = -1;
    ParseVerString(row[0], &record);
    return numbers(record).substr(1);
  });
  expect_rows("pelver", "file name", [](const Row& row) {
    return text_of(AppendVerLogFile(row[0], row.number(1), row[2]));
  });
  EXPECT_EQ(Is64BitWindows() + GetBitness("10.1(64)"), 0);
}

TEST_F(Discovery, SoundVersionLibraries) {
  put_library(VERSION_LIBRARY_WHOLE);
  EXPECT_EQ(discover(), using_phm() +
                            "Pelloran Version: 10.1B0317\nExtracted from versioninfo.dll\n"
                            "Major version: 10\nMinor version: 1\nMaint Level: B\n"
                            "Service Pack: 7\nService Pack Minor Level: 9\nBuild Number: -3\n\n");
  EXPECT_STREQ(pphm->version, "10.1B03");
  const std::string zeros =
      "Major version: 0\nMinor version: 0\nMaint Level: \n"
      "Service Pack: 0\nService Pack Minor Level: 0\nBuild Number: 0\n\n";
  put_library(VERSION_LIBRARY_BARE);
  EXPECT_EQ(discover(),
            using_phm() + "Pelloran Version: 9.1D09\nExtracted from versioninfo.dll\n" + zeros);
  PHMVER known{};
  known.fullVersion = ::strdup("10.1B03 kept");
  EXPECT_EQ(getPelVerInfoDLL(&known, library().c_str(), nullptr), 1);
  EXPECT_STREQ(known.fullVersion, "10.1B03 kept") << "the library has no full version";
  for (char* text : {known.version, known.fullVersion, known.maintLevel}) std::free(text);
  put_library(VERSION_LIBRARY_FAILING);
  EXPECT_EQ(discover(), using_phm() + "Unable to extract version from " + library() + "\n" + zeros);
  EXPECT_EQ(pphm->version, nullptr);
}

TEST_F(Discovery, BrokenVersionLibrariesFallBackToTheVersionFile) {
  write_file(version_file(), "Pelloran Version 10.1B03 as of");
  const std::string sound = read_file(VERSION_LIBRARY_WHOLE);
  std::vector<std::string> contents = {sound.substr(0, 4) + std::string(6000, '\xff'),
                                       "not a library",
                                       read_file(HOST).substr(0, 64) + std::string(6000, '\0')};
  for (const std::size_t size : {0U, 40U, 200U, 4096U, 0x2100U})
    contents.push_back(sound.substr(0, size));
  for (const std::string& content : contents) {
    write_file(library(), content);
    EXPECT_EQ(discover(), using_phm() + "Failed to load library " + library() +
                              "\nPelloran Version: 10.1B03\nExtracted from " + version_file() +
                              "\n\n")
        << content.size() << " bytes";
  }
  fs::remove(library());
  ASSERT_EQ(::mkfifo(library().c_str(), 0600), 0);
  EXPECT_THAT(discover(), StartsWith(using_phm() + "Failed to load library ")) << "not a hang";
}

TEST_F(Discovery, AbsurdPath) {
  installation_ = "/" + std::string(4999, 'x');
  EXPECT_EQ(discover(), using_phm() + too_long("path", installation_ + "/bin/versioninfo.dll") +
                            too_long("path", installation_ + "/version") + "\n");
  EXPECT_EQ(pphm->dir, installation_);
  EXPECT_EQ(FindPelInstUnix(), 2);
}

TEST_F(Discovery, Launcher) {
  if (!with_private_usr_bin("pel", "", path(""))) GTEST_SKIP() << "no private mounts here";
  const std::string start = "No PHM env var set\nExtracting PHM from /usr/bin/pel\n";
  expect_rows("pelver", "launcher", [&](const Row& row) {
    write_file("/usr/bin/pel", row.text(0));
    pphm = nullptr;
    const std::string said = taken(GetPhmVers());
    if (pphm == nullptr) {
      EXPECT_EQ(said, start + "Unable to locate PHM in /usr/bin/pel\n");
      return std::string("none");
    }
    EXPECT_EQ(said, start + "PHM is " + pphm->dir + "\nUnable to open version file " + pphm->dir +
                        "/version\n\n");
    return std::string(pphm->dir);
  });
}

TEST_F(Discovery, NowhereToPutTheMessages) {
  set_environment("TMPDIR", "/proc");
  EXPECT_EQ(discover(), "");
}

TEST_F(Discovery, MonitoringInstallation) {
  write_file(version_file(), "Pelloran Version 10.1B03 as of");
  const std::string init_file = path("delvon.ini");
  const std::string pelloran =
      using_phm() + "Pelloran Version: 10.1B03\nExtracted from " + version_file() + "\n\n";
  set_environment("DELVONINIT", init_file.c_str());
  EXPECT_EQ(discover(), pelloran + "Found DELVONINIT, " + init_file + " does not exist\n\n");
  const std::string longest = "/" + std::string(232, 'd');
  write_file(init_file, std::string(254, 'x') + "SET delvonInstallDir=" + longest + "d\n");
  std::array<char, 256> found{};
  EXPECT_EQ(GetDelvonTarg(init_file.c_str(), found.data()), 0);
  EXPECT_EQ(found.data(), longest);
  EXPECT_EQ(GetDelvonTarg("/dev/zero", found.data()), EINVAL) << "not an endless loop";
  EXPECT_EQ(GetDelvonTarg("/dev/null", found.data()), 1);
  const std::string delvon = path("delvon");
  write_file(delvon + "/delvonversion", "Delvon Version 2.1A01 as of");
  expect_rows("pelver", "init file", [&](const Row& row) {
    write_file(init_file, row.text(0));
    EXPECT_THAT(discover(), StartsWith(pelloran));
    const PHMVER* record = pphm->next;
    if (record == nullptr) return discover().substr(pelloran.size());
    EXPECT_EQ(record->initFile, init_file);
    EXPECT_STREQ(record->pelVersion, "10.1B03");
    EXPECT_EQ(record->flags, 4U);
    EXPECT_EQ(record->major, 0);
    return discover().substr(pelloran.size()) + record->dir;
  });
  EXPECT_EQ(taken(GetPelVersList(SEL_ANY)), "10.1B,2.1A:10.1B03");
  EXPECT_EQ(taken(GetPelVersList(SEL_MONITOR)), "2.1A:10.1B03");
  EXPECT_EQ(taken(GetPelVersList(SEL_WEBCLIENT)), "");
  put_library(VERSION_LIBRARY_WHOLE);
  static_cast<void>(discover());
  EXPECT_STREQ(pphm->next->pelVersion, "10.1B03") << "not the full version";
}

TEST_F(Discovery, VersionList) {
  SIT_Initiate();
  PHMVER last = record_with(nullptr, PK_MONITOR);
  PHMVER fitting = record_with("12.1", 0, &last);
  const std::string long_version(250, '9');
  PHMVER too_much = record_with(long_version.c_str(), 0, &fitting);
  PHMVER contained = record_with("10.1", 0, &too_much);
  PHMVER first = record_with("10.1B03", PK_WEBCLIENT, &contained);
  EXPECT_EQ(FoundWebClient(), 0);
  pphm = &first;
  EXPECT_EQ(FoundWebClient(), 1);
  EXPECT_EQ(taken(GetPelVersList(SEL_ANY)), "10.1B,12.1,:");
  EXPECT_EQ(taken(GetPelVersList(SEL_WEBCLIENT)), "10.1B");
  pphm = nullptr;
}

TEST_F(Discovery, FrameworkVersionFile) {
  put_library(VERSION_LIBRARY_WHOLE);
  write_file(installation_ + "/embversion", "Framework Version 1.2C07 as of");
  write_file(version_file(), "Pelloran Version 10.1B03 as of");
  const std::string own =
      "Ambrelis Version: 1.2C07\nExtracted from " + installation_ + "/embversion\n\n";
  const std::string other = "Pelloran Version: 10.1B03\nExtracted from " + version_file() + "\n\n";
  for (const auto& [version, message] : {std::pair{"1.0", own}, {"", other}, {"2.0", other}}) {
    PHMVER* record = createPHMVER();
    addPHMVERToList(&pphm, record);
    record->dir = ::strdup(installation_.c_str());
    if (*version != '\0') record->version = ::strdup(version);
    record->flags = PK_FRAMEWORK;
    char* text = nullptr;
    std::size_t size = 0;
    FILE* output = ::open_memstream(&text, &size);
    getPelVerInfo(record, output);
    std::fclose(output);
    EXPECT_EQ(taken(text), message);
    EXPECT_STREQ(record->version, *version == '\0' ? "10.1B03" : version);
  }
  EXPECT_EQ(pphm->next->next->next, nullptr);
}

}  // namespace
}  // namespace test

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <tuple>

#include "support/sit_test.h"

namespace {

using test::read_file;
using test::set_environment;
using test::taken;
using test::write_file;

std::string text_of(const char* text) { return text == nullptr ? "(null)" : text; }

class Discovery : public test::SitTest {
 protected:
  void SetUp() override {
    SitTest::SetUp();
    installation_ = path("pel");
    std::filesystem::create_directory(installation_);
  }

  std::string discover() const {
    set_environment("PHM", installation_.c_str());
    return taken(GetPhmVers());
  }
  void put_library(const std::string& file) const {
    std::filesystem::create_directory(installation_ + "/bin");
    std::filesystem::copy_file(file, library(), std::filesystem::copy_options::overwrite_existing);
  }
  [[nodiscard]] std::string library() const { return installation_ + "/bin/versioninfo.dll"; }
  [[nodiscard]] std::string version_file() const { return installation_ + "/version"; }
  [[nodiscard]] std::string using_phm() const { return "Using PHM: " + installation_ + "\n"; }

  std::string installation_;
};

TEST_F(Discovery, VersionFiles) {
  const std::string string = "Unable to find version string in '";
  const std::string number = "Unable to find version number in '";
  const std::string sevens(70, '7');
  const std::string dots(78, '.');
  // The content, what the message begins with, the version or the text shown, and its numbers.
  const std::tuple<std::string, std::string, std::string, int, int> files[] = {
      {"Pelloran Version 10.1B03 as of a date\n", "", "10.1B03", 10, 1},
      {"PELLORAN VERSION 9.1D09 as of", "", "9.1D09", 9, 1},
      {"The Server 10.2 build", "", "10.2", 10, 0},
      {"Release  9.2B y", "", " 9.2B", 9, 2},
      {std::string("\x7f\0\x01 Ver\0 1.\0 2", 14), "", "1.", 1, 0},
      {"Version " + sevens + " ", "", sevens, 0, 0},
      {"Version " + sevens + "7 ", number, "Version " + sevens + "7 ", 0, 0},
      {"Pelloran Release 10.2B", number, "Pelloran Release 10.2B", 0, 0},
      {"Version", number, "Version", 0, 0},
      {"", string, "", 0, 0},
      {"no such word\n", string, "no such word\n", 0, 0},
      {dots + "Version 1.2 x", string, dots + "Ve", 0, 0}};
  for (const auto& [content, problem, shown, major, minor] : files) {
    write_file(version_file(), content);
    pphm = nullptr;
    EXPECT_EQ(discover(),
              using_phm() +
                  (problem.empty() ? "Pelloran Version: " + shown : problem + shown + "'") +
                  "\nExtracted from " + version_file() + "\n\n");
    ASSERT_NE(pphm, nullptr);
    EXPECT_EQ(text_of(pphm->version), problem.empty() ? shown : "(null)");
    EXPECT_EQ(text_of(pphm->fullVersion), text_of(pphm->version));
    EXPECT_EQ((std::pair<int, int>(pphm->major, pphm->minor)), std::pair(major, minor));
    EXPECT_STREQ(pphm->maintLevel, "");
    EXPECT_EQ(pphm->dir, installation_);
  }
}

TEST_F(Discovery, VersionFileThatCannotBeRead) {
  const std::string missing = "Unable to open version file " + version_file() + "\n\n";
  EXPECT_EQ(discover(), using_phm() + missing);
  ASSERT_NE(pphm, nullptr);
  EXPECT_EQ(pphm->version, nullptr);
  std::filesystem::create_directory(version_file());
  EXPECT_EQ(discover(), using_phm() + "Unable to find version string in ''\nExtracted from " +
                            version_file() + "\n\n");
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
  std::filesystem::remove(library());
  ASSERT_EQ(::mkfifo(library().c_str(), 0600), 0);
  EXPECT_TRUE(discover().starts_with(using_phm() + "Failed to load library ")) << "not a hang";
}

TEST_F(Discovery, AbsurdPath) {
  installation_ = "/" + std::string(4999, 'x');
  const auto refused = [](std::size_t length) {
    return "ERROR: The path of " + std::to_string(length) +
           " characters is longer than 255 and is not used: /" + std::string(199, 'x') + "...\n";
  };
  EXPECT_EQ(discover(), using_phm() + refused(5000 + 20) + refused(5000 + 8) + "\n");
  EXPECT_EQ(pphm->dir, installation_);
  EXPECT_EQ(FindPelInstUnix(), 2);
}

TEST_F(Discovery, Launcher) {
  const std::string tail = "Unable to locate PHM in /usr/bin/pel\n";
  const auto found = [](const std::string& directory) {
    return "PHM is " + directory + "\nUnable to open version file " + directory + "/version\n\n";
  };
  const std::pair<std::string, std::string> scripts[] = {
      {"#!/bin/sh\nPHM=${PHM-/nosuch/pel}\nexport PHM\n", found("/nosuch/pel")},
      {"#!/bin/sh\nPHM=${PHM-}\n", found("")},
      {"#!/bin/sh\n0123456789/nosuch/x}", found("/nosuch/x")},
      {"#!/bin/sh\n", tail},
      {"", tail},
      {"#!/bin/sh\n0123456789", tail},
      {"#!/bin/sh\n0123456789\n}", tail},
      {"#!/bin/sh\n0123456789/nosuch\n}", tail},
      {"#!/bin/sh\n0123456789" + std::string(234, 'x') + "}", found(std::string(234, 'x'))},
      {"#!/bin/sh\n0123456789" + std::string(235, 'x') + "}", tail},
      {"#!/bin/sh\n0123456789" + std::string(9000, 'x') + "}", tail}};
  if (!test::with_private_usr_bin("pel", "", path(""))) GTEST_SKIP() << "no private mounts here";
  for (const auto& [script, expected] : scripts) {
    write_file("/usr/bin/pel", script);
    pphm = nullptr;
    EXPECT_EQ(taken(GetPhmVers()),
              "No PHM env var set\nExtracting PHM from /usr/bin/pel\n" + expected);
    EXPECT_EQ(pphm == nullptr, expected == tail);
  }
}

TEST_F(Discovery, NothingToFind) {
  if (std::filesystem::exists("/usr/bin/pel")) GTEST_SKIP() << "this machine has a launcher";
  EXPECT_EQ(taken(GetPhmVers()),
            "No PHM env var set\nPlease set the PHM environment variable and execute again\n");
  EXPECT_EQ(pphm, nullptr);
  EXPECT_EQ(taken(GetPelVersList(SEL_ANY)), "");
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
  for (const std::string& content :
       {std::string(), std::string("SET delvonInstallDir="),
        std::string("SET delvonInstallDir=\r\n"), std::string("set delvonInstallDir=/x\n")}) {
    write_file(init_file, content);
    EXPECT_EQ(discover(), pelloran + "Found DELVONINIT, unable to extract delvonInstallDir from " +
                              init_file + "\n\n")
        << content;
  }
  const std::string longest = "/" + std::string(232, 'd');
  write_file(init_file, std::string(254, 'x') + "SET delvonInstallDir=" + longest + "d\n");
  std::array<char, 256> found{};
  EXPECT_EQ(GetDelvonTarg(init_file.c_str(), found.data()), 0);
  EXPECT_EQ(found.data(), longest);
  EXPECT_EQ(GetDelvonTarg("/dev/zero", found.data()), EINVAL) << "not an endless loop";
  const std::string delvon = path("delvon");
  write_file(delvon + "/delvonversion", "Delvon Version 2.1A01 as of");
  for (const char* end : {"", "\n", "\r\n"}) {
    write_file(init_file, "SET a=b\nSET delvonInstallDir=" + delvon + end);
    EXPECT_EQ(discover(), pelloran + "Using DELVONINIT: " + init_file +
                              "\nDelvon Version: 2.1A01\nExtracted from " + delvon +
                              "/delvonversion\n\n");
    const PHMVER* record = pphm->next;
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->dir, delvon);
    EXPECT_EQ(record->initFile, init_file);
    EXPECT_STREQ(record->pelVersion, "10.1B03");
    EXPECT_EQ(record->flags, 4U);
    EXPECT_EQ(record->major, 0);
  }
  EXPECT_EQ(taken(GetPelVersList(SEL_ANY)), "10.1B,2.1A:10.1B03");
  EXPECT_EQ(taken(GetPelVersList(SEL_MONITOR)), "2.1A:10.1B03");
  EXPECT_EQ(taken(GetPelVersList(SEL_WEBCLIENT)), "");
}

PHMVER record_with(const char* version, unsigned flags, PHMVER* next = nullptr) {
  PHMVER record{};
  record.version = const_cast<char*>(version);
  record.flags = flags;
  record.next = next;
  return record;
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

TEST(Records, Selectors) {
  // Kinds: plain, web client, framework, monitor (4 and 32), extra, framework and web client.
  const unsigned kinds[] = {0, 1, 2, 4, 32, 64, 3};
  const std::pair<int, std::string> selectors[] = {
      {1, "1000010"}, {2, "0100000"}, {3, "1100010"},  {4, "0010001"}, {5, "0001100"},
      {6, "0000010"}, {7, "0010011"}, {99, "1111111"}, {0, "1111111"}, {8, "1111111"}};
  for (const auto& [selector, expected] : selectors) {
    std::string accepted;
    for (const unsigned kind : kinds) {
      const PHMVER record = record_with(nullptr, kind);
      accepted += std::to_string(IsCorrectProduct(&record, selector));
    }
    EXPECT_EQ(accepted, expected) << "selector " << selector;
  }
}

TEST(Records, VersionTexts) {
  const std::pair<std::string, std::string> patches[] = {
      {"10.1B03", "10.1B"},  {"9.1D09", "9.1D"},   {"10.1B", "10.1B"}, {"10.1B3", "10.1B3"},
      {"10.1BSP1", "10.1B"}, {"10.1BX", "10.1BX"}, {"", ""},           {"1012", "1012"},
      {"SP.1", "SP.1"},      {"10.1BX3", "10.1B"}, {"10.", "10."}};
  for (auto [version, release] : patches) {
    RmPatchInfoPHM(version.data());
    EXPECT_STREQ(version.c_str(), release.c_str());
  }
  const std::tuple<const char*, int, int> parsed[] = {{"10", -1, -1},
                                                      {"10.2", 10, -1},
                                                      {"10.2B", 10, 2},
                                                      {"10.B", 10, 0},
                                                      {".5x", 0, 5},
                                                      {" 10. 5B", 10, 0},
                                                      {"99999999999.1x", 32767, 1}};
  for (const auto& [text, major, minor] : parsed) {
    PHMVER record{};
    record.major = record.minor = -1;
    ParseVerString(text, &record);
    EXPECT_EQ((std::pair<int, int>(record.major, record.minor)), std::pair(major, minor)) << text;
  }
}

TEST(Records, FileNames) {
  EXPECT_STREQ(AppendVerLogFile("10.1B03", 0, "/tmp/stem"), "/tmp/stem101B");
  EXPECT_STREQ(AppendVerLogFile("10.1B03", 64, "x"), "x101B(64)");
  EXPECT_STREQ(AppendVerLogFile("9.1D", 32, ""), "91D(32)");
  EXPECT_STREQ(AppendVerLogFile("9.1D(64)", -1, "x"), "x91D");
  EXPECT_STREQ(AppendVerLogFile("1", 0, std::string(253, 'x').c_str()),
               (std::string(253, 'x') + "1").c_str());
  EXPECT_EQ(AppendVerLogFile("1", 0, std::string(254, 'x').c_str()), nullptr);
  EXPECT_EQ(Is64BitWindows() + GetBitness("10.1(64)"), 0);
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
  }
  int records = 0;
  for (const PHMVER* record = pphm; record != nullptr; record = record->next) ++records;
  EXPECT_EQ(records, 3);
}

}  // namespace

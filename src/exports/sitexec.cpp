#include "sit/sitexec.h"

#include "commutils/views.h"
#include "pelver/installations.h"
#include "sitexec/capture.h"
#include "sitexec/commands.h"
#include "sitexec/initiation.h"

using namespace sit;

extern "C" {

// ---- Session calls ----

int SIT_Initiate() noexcept {
  sitexec::initiate();
  return 0;
}

void GetAPIVersion(char* buffer) noexcept {
  if (buffer != nullptr) put_text(buffer, kVersion);
}

void SetVerboseMode(int on) noexcept { IsVerbose = on; }

void SetPelloranIndependent(int on) noexcept { nopel = on; }

char* GetOSVersion(char* buffer) noexcept {
  sitexec::ensure_session();
  if (pc == nullptr || buffer == nullptr) return nullptr;
  put_text(buffer, pc->osVersion);
  return buffer;
}

void PutRecentError(const char* text) noexcept { sitexec::record_error(text); }

int RetrieveErrors(char* buffer) noexcept { return sitexec::take_errors(buffer); }

char* Initialize_pphm() noexcept { return sitexec::discover_installations(); }

// ---- Queries about installations ----

char* GetPelVersList(unsigned int selector) noexcept {
  return sitexec::version_keys(static_cast<int>(selector)).release();
}

int FoundPelInst() noexcept {
  sitexec::ensure_session();
  return p_sitfunctbl->FindInstallation();
}

int FoundWebClient() noexcept {
  return pelver::installations().find(pelver::is_web_client) != nullptr ? 1 : 0;
}

// ---- Collection commands ----

int GetEnvironInfo(const char* path, int mode, int final) noexcept {
  return sitexec::write_environment({path, mode, final});
}

int GetSysInfo(const char* path, std::int16_t section, int mode, int final) noexcept {
  return sitexec::write_system({path, mode, final}, section);
}

int GetPelVers(const char* path, int mode, int final) noexcept {
  return sitexec::write_versions({path, mode, final});
}

int GetJavaVers(const char* path, int mode, int final) noexcept {
  return sitexec::write_java({path, mode, final});
}

int GetVersInfo(const char* path, int mode, int final, int extra) noexcept {
  return sitexec::write_summary({path, mode, final}, extra != 0);
}

int GetPelCFGInfo(const char* path, const char* version_key, int mode, int final,
                  int selector) noexcept {
  return sitexec::write_configuration({path, mode, final}, version_key, selector);
}

int GetPelInstFiles(const char* path, const char* version_key, int mode, int /*ignored*/,
                    int selector) noexcept {
  return sitexec::write_files({path, mode, SIT_FINAL}, version_key, selector);
}

int GetPelSecurityLog(const char* path, const char* version_key, int mode, int /*ignored*/,
                      int selector) noexcept {
  return sitexec::write_stores({path, mode, SIT_FINAL}, version_key, selector);
}

int GetDelvonFiles(const char* path, char* directory, const char* version_key) noexcept {
  return sitexec::copy_monitor_files(path, directory, version_key);
}

int GetOBValidationInfo(const char* destination, const char* path, const char* version_key,
                        int mode, int /*ignored*/, const char* plugins_file,
                        const char* conmgr_file) noexcept {
  return sitexec::write_validation({path, mode, SIT_FINAL}, version_key,
                                   {plugins_file, conmgr_file}, destination);
}

int OBCopyFiles(const char* path, const char* name, const char* version,
                const char* destination) noexcept {
  return sitexec::copy_logs(path, name, version, destination);
}

// ---- Capture ----

int RunCommand(const char* command, const char* entry, char is_library, const char* base,
               const char* capture_name, const char* output_file, const char* index) noexcept {
  return sitexec::run_captured({.command = command,
                                .entry = entry,
                                .is_library = is_library != 0,
                                .base = base,
                                .name = capture_name,
                                .output_file = output_file,
                                .index = index});
}

int ExecDLLFunction(const char* path, const char* entry, char** error) noexcept {
  HeapText reason;
  const bool is_called = sitexec::call_entry_point(path, entry, reason);
  if (error != nullptr) *error = reason.release();
  return is_called ? 0 : 1;
}

}  // extern "C"

#include "sit/usysinfo.h"

#include "usysinfo.h"

extern "C" {

const char* MACHLST[] = {"uname -X", "uname -a", "uname", nullptr};
const char* ULIMITLST[] = {"ulimit -a", "ulimit", nullptr};
const char* SWAPLST[] = {"free", "vmstat", nullptr};
const char* MNTLST[] = {"mount", "/etc/mount", "/usr/sbin/mount", nullptr};
const char* DSKLST[] = {"df -k", "df", nullptr};
const char* SYSTABLST[] = {"sar -v 1 1", "/etc/pstat -T", nullptr};
const char* KNLLST[] = {"sysctl -a", "/sbin/sysctl -a", nullptr};
const char* SEMLST[] = {"ipcs -s", "ipcs -sa", "/etc/sysdef | grep SEM", nullptr};
const char* SHMLST[] = {"ipcs -m", "ipcs -ma", "/etc/sysdef | grep SHM", nullptr};
const char* PRDLST[] = {"rpm -qa", nullptr};
const char* PROCLST[] = {"ps -eflyw", "ps -eflw", "ps -elfy", "ps -efl",
                         "ps -ef",    "ps -auwx", "ps",       nullptr};
const char* NETLST[] = {"netstat -a", "/usr/bin/netstat -a", "netstat", "/usr/bin/netstat",
                        nullptr};
const char* PCHLST[] = {nullptr};

int GetUnixSysInfo(int16_t section) noexcept {
  if (section == 0) sit::usysinfo::write_all_sections();
  return 0;
}

void execcmdlist(const char* title, const char* list[], int limit) noexcept {
  sit::usysinfo::write_section(title, list, limit);
}

void execonecmd(const char* title, const char* command) noexcept {
  sit::usysinfo::write_section(title, command);
}

}  // extern "C"

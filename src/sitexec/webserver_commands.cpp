// The commands about web servers, which initiate no session.
#include "sitexec/commands.h"
#include "sitexec/frame.h"
#include "websvr/websvr.h"

namespace sit::sitexec {

// The search comes before the report, but in verbose mode is a part of it.
int write_netscape(const char* path, const char* server_root, const char* server_name) noexcept {
  const Frame frame{.path = path,
                    .mode = SIT_CREATE,
                    .title = "Netscape/iPlanet Configuration",
                    .needs = Needs::kNothing};
  Path instance;
  const auto find = [&] { return websvr::find_instance(server_root, server_name, instance); };
  const auto find_quietly = [&]() -> std::optional<int> {
    if (is_verbose()) return std::nullopt;
    const int found = find();
    return found != SIT_OK ? std::optional{found} : std::nullopt;
  };
  return run_framed(frame, find_quietly, [&] {
    const int found = is_verbose() ? find() : SIT_OK;
    if (found == SIT_OK) websvr::write_instance(instance.view());
    return found;
  });
}

int write_apache(const char* path, std::string_view server_root) noexcept {
  const Frame frame{
      .path = path, .mode = SIT_CREATE, .title = "Apache Configuration", .needs = Needs::kNothing};
  Path conf;
  const auto find = [&]() -> std::optional<int> {
    if (websvr::find_apache_conf(server_root, conf)) return std::nullopt;
    return SIT_NOT_FOUND;
  };
  return run_framed(frame, find, [&] { return websvr::write_apache(conf.c_str(), server_root); });
}

}  // namespace sit::sitexec

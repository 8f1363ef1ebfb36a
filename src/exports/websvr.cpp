#include "sit/websvr.h"

#include <cerrno>

#include "commutils/views.h"
#include "sitexec/commands.h"
#include "websvr/values.h"
#include "websvr/websvr.h"

using namespace sit;

extern "C" {

constinit const char* nsSrvId = "ServerID https-";

int GetNetscapeInfo(const char* path, const char* server_root, const char* server_name) noexcept {
  return sitexec::write_netscape(path, server_root, server_name);
}

int GetNetscapeServerDir(const char* server_root, const char* server_name, char* output) noexcept {
  if (server_root == nullptr || output == nullptr) return EINVAL;
  Path instance;
  const int result = websvr::search(server_root, server_name, instance);
  put_text(output, instance.view());
  return result;
}

int CheckNetscapeServerName(const char* server_root, const char* entry, const char* server_name,
                            unsigned int* flags) noexcept {
  unsigned int ignored = 0;
  return websvr::is_server(server_root, entry, server_name, flags != nullptr ? *flags : ignored)
             ? 1
             : 0;
}

int LogNetscapeConfig(const char* instance) noexcept {
  return websvr::write_instance(text_of(instance));
}

int GetNetscapeObjConf(const char* magnus_conf, const char* instance, char* output) noexcept {
  if (output == nullptr) return EINVAL;
  Path object_file;
  const int result = websvr::find_object_file(magnus_conf, text_of(instance), object_file);
  put_text(output, object_file.view());
  return result;
}

int LogNetscapeCGIDirs(const char* object_file) noexcept {
  return websvr::list_cgi_directories(object_file);
}

int GetApacheInfo(const char* path, const char* server_root) noexcept {
  return sitexec::write_apache(path, text_of(server_root));
}

void FindApacheScriptAlias(const char* httpd_conf, const char* server_root) noexcept {
  websvr::list_script_aliases(httpd_conf, text_of(server_root));
}

void GetConfPathName(const char* text, char* output) noexcept {
  if (output == nullptr) return;
  Path value;
  static_cast<void>(compose(value, "The value", {websvr::read_value(text_of(text)).text}));
  put_text(output, value.view());
}

void MakeAbsolutePath(const char* path, const char* base, char* output) noexcept {
  if (output == nullptr) return;
  Path absolute;
  static_cast<void>(websvr::make_absolute(absolute, text_of(path), text_of(base)));
  put_text(output, absolute.view());
}

int IsAbsolutePath(const char* path) noexcept { return websvr::is_absolute(text_of(path)) ? 1 : 0; }

void StripTrailingSlash(char* path) noexcept {
  if (path != nullptr) path[websvr::without_trailing_slash(path).size()] = '\0';
}

}  // extern "C"

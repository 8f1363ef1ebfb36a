// The configuration files of web servers.
#include <array>

#include "support.h"

namespace {

using Path = std::array<char, SIT_PATH_BYTES>;

void feed_magnus_conf(std::string_view input) {
  const std::string conf = fuzz::file("https-shop/config/magnus.conf", input);
  Path object_file{};
  GetNetscapeObjConf(conf.c_str(), fuzz::scratch("https-shop").c_str(), object_file.data());
  GetNetscapeServerDir(fuzz::scratch("").c_str(), "shop", object_file.data());
}

void feed_obj_conf(std::string_view input) {
  LogNetscapeCGIDirs(fuzz::file("obj.conf", input).c_str());
}

void feed_httpd_conf(std::string_view input) {
  FindApacheScriptAlias(fuzz::file("httpd.conf", input).c_str(), fuzz::scratch("").c_str());
}

void feed_conf_value(std::string_view input) {
  Path value{};
  GetConfPathName(fuzz::text(input).get(), value.data());
  MakeAbsolutePath(value.data(), fuzz::text(input).get(), value.data());
  StripTrailingSlash(value.data());
}

const fuzz::Target kTargets[] = {
    {"magnus_conf", feed_magnus_conf},
    {"obj_conf", feed_obj_conf},
    {"httpd_conf", feed_httpd_conf},
    {"conf_value", feed_conf_value},
};

}  // namespace

#include "support/rule_file.h"

#include <algorithm>
#include <utility>

#include "support/failure.h"

namespace host {
namespace {

// The first field of the map that is none of these; empty: there is none.
std::string stranger_in(const YAML::Node& map, std::initializer_list<const char*> known) {
  for (const auto& field : map) {
    auto name = field.first.as<std::string>();
    const bool is_known = std::any_of(known.begin(), known.end(),
                                      [&name](const char* other) { return name == other; });
    if (!is_known) return name;
  }
  return {};
}

}  // namespace

RE2::Options rule_options() {
  RE2::Options options(RE2::Quiet);
  options.set_encoding(RE2::Options::EncodingLatin1);
  options.set_never_nl(true);
  constexpr std::int64_t kMemory = 1 << 20;
  options.set_max_mem(kMemory);
  return options;
}

void Rule::fail(const std::string& why) const { throw UsageError(place_ + ": " + why); }

template <typename Value>
Value Rule::as(const char* field) const {
  if (!has(field)) fail(std::string("lacks \"") + field + "\"");
  try {
    return node_[field].as<Value>();
  } catch (const YAML::Exception& error) {
    fail(std::string("\"") + field + "\": " + error.what());
  }
}

std::string Rule::text(const char* field) const { return as<std::string>(field); }

std::string Rule::text_or(const char* field, const std::string& otherwise) const {
  return has(field) ? text(field) : otherwise;
}

double Rule::number_or(const char* field, double otherwise) const {
  return has(field) ? as<double>(field) : otherwise;
}

bool Rule::flag(const char* field) const { return has(field) && as<bool>(field); }

std::vector<std::string> Rule::texts(const char* field) const {
  return has(field) ? as<std::vector<std::string>>(field) : std::vector<std::string>();
}

Pattern Rule::pattern(const char* field) const { return compile(text(field)); }

Pattern Rule::pattern_if_any(const char* field) const {
  return has(field) ? pattern(field) : nullptr;
}

std::pair<std::string, std::string> Rule::parts_of(const std::string& example) const {
  constexpr std::string_view kParting = " <> ";
  const std::size_t parting = example.find(kParting);
  if (parting == std::string::npos) fail("its example is not two texts parted by <>");
  return {example.substr(0, parting), example.substr(parting + kParting.size())};
}

Pattern Rule::compile(const std::string& text) const {
  Pattern pattern = std::make_shared<RE2>("(?m:" + text + ")", rule_options());
  if (!pattern->ok()) fail("\"" + text + "\": " + pattern->error());
  return pattern;
}

RuleFile::RuleFile(const std::filesystem::path& path, const std::string& what,
                   std::initializer_list<const char*> lists)
    : place_(what + " " + path.string()) {
  try {
    file_ = YAML::LoadFile(path.string());
    if (!file_.IsMap()) fail("holds no rules");
    const std::string stranger = stranger_in(file_, lists);
    if (!stranger.empty()) fail("\"" + stranger + "\" is not known");
  } catch (const YAML::BadFile&) {
    fail("cannot be read");
  } catch (const YAML::Exception& error) {
    fail(error.what());
  }
}

void RuleFile::fail(const std::string& why) const { throw UsageError(place_ + ": " + why); }

void RuleFile::each(const char* list, std::initializer_list<const char*> fields,
                    const std::function<void(const Rule& rule)>& take) const {
  const YAML::Node entries = file_[list];
  if (!entries || entries.IsNull()) return;
  if (!entries.IsSequence()) fail(std::string("\"") + list + "\" is no list");
  for (const auto& entry : entries) {
    if (!entry.IsMap() || !entry["name"] || !entry["name"].IsScalar()) {
      fail(std::string("a rule of \"") + list + "\" lacks \"name\"");
    }
    const Rule rule(place_ + ", \"" + entry["name"].Scalar() + "\"", entry);
    const std::string stranger = stranger_in(entry, fields);
    if (!stranger.empty()) rule.fail("\"" + stranger + "\" is not known");
    take(rule);
  }
}

}  // namespace host

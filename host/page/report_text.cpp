#include "page/report_text.h"

#include <algorithm>
#include <kainjow/mustache.hpp>
#include <string_view>

#include "support/lines.h"
#include "support/text.h"

namespace host {

std::string html_text(std::string_view text) {
  return kainjow::mustache::html_escape(printable(text));
}

std::string html_of(const OutputFolder& folder, const std::string& file, const std::string& id,
                    const MarkedLines& marked, std::uint64_t most, bool& is_whole) {
  std::string html;
  const auto add_marked = [&](const char* element, std::uint64_t number, const std::string& text) {
    const std::string name(element);
    html += "<" + name + " id=\"" + html_text(id) + ":" + std::to_string(number) + "\">" + text +
            "</" + name + ">\n";
  };
  Lines lines([&](std::string_view line, std::uint64_t number) {
    is_whole = html.size() < most;
    if (!is_whole) return false;
    std::string plain(line);
    std::ranges::replace(plain, '\t', ' ');
    const std::string text = html_text(plain);
    if (marked.wrong.contains(number)) {
      add_marked("mark", number, text);
    } else if (marked.titles.contains(number)) {
      add_marked("b", number, text);
    } else {
      html += text + "\n";
    }
    return true;
  });
  is_whole = true;
  const Descriptor opened = folder.open(file);
  lines.read(opened.get());
  return html;
}

}  // namespace host

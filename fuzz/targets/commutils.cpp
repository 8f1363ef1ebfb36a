// The message formatter and the field splitter.
#include <algorithm>
#include <array>
#include <cstdarg>
#include <utility>

#include "support.h"

namespace {

constexpr std::size_t kArguments = 32;

void format(char* output, const char* message, ...) {
  std::va_list arguments;
  va_start(arguments, message);
  msgsub(output, message, arguments);
  va_end(arguments);
}

// Every conversion may be given a pointer: those that want a number take a part of it.
template <std::size_t... Index>
void format_texts(char* output, const char* message, std::index_sequence<Index...> /*indices*/) {
  static const std::string long_text(SIT_MESSAGE_BYTES, 'x');
  static const std::array<const char*, 4> texts{"", "text", nullptr, long_text.c_str()};
  format(output, message, texts[Index % texts.size()]...);
}

void feed_message(std::string_view input) {
  if (std::ranges::count(input, '%') > static_cast<std::ptrdiff_t>(kArguments)) return;
  const auto output = std::make_unique<std::array<char, SIT_MESSAGE_BYTES>>();
  format_texts(output->data(), fuzz::text(input).get(), std::make_index_sequence<kArguments>{});
}

void feed_field(std::string_view input) {
  if (input.size() < 2) return;
  const auto number = static_cast<unsigned char>(input[0]);
  strentry(number, fuzz::text(input.substr(2)).get(), input[1]);
}

const fuzz::Target kTargets[] = {
    {"message", feed_message},
    {"field", feed_field},
};

}  // namespace

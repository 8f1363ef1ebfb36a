#include "commutils/message.h"

#include <cstddef>
#include <cstring>
#include <string_view>

#include "commutils/numbers.h"
#include "commutils/views.h"
#include "sit/codes.h"

namespace sit {
namespace {

// The caller's buffer, filled from its start. A message is for reading, so unlike a path it may
// be cut at its capacity.
class Message {
 public:
  explicit Message(char* buffer) noexcept : next_(buffer), limit_(buffer + SIT_MESSAGE_BYTES - 1) {}

  void add(char c) noexcept {
    if (!full()) *next_++ = c;
  }
  void add(std::string_view text) noexcept {
    const auto room = static_cast<std::size_t>(limit_ - next_);
    next_ = put(next_, head(text, room));
  }
  [[nodiscard]] bool full() const noexcept { return next_ >= limit_; }
  void terminate() noexcept { *next_ = '\0'; }

 private:
  char* next_;
  char* limit_;
};

constexpr std::string_view kConversions = "sdilxXcr";

// The analyzer does not see through the pointer that the list has been copied.
// NOLINTBEGIN(clang-analyzer-valist.Uninitialized)
void convert(char conversion, va_list* arguments, Message& message) noexcept {
  switch (conversion) {
    case 's':
      message.add(text_of(va_arg(*arguments, const char*)));
      break;
    case 'x':
    case 'X':
      message.add(NumberText::hexadecimal(va_arg(*arguments, unsigned)).view());
      break;
    case 'c':
      message.add(static_cast<char>(va_arg(*arguments, int)));
      break;
    case 'r':
      message.add('\n');
      break;
    default:
      message.add(NumberText::decimal(va_arg(*arguments, int)).view());
      break;
  }
}

// NOLINTEND(clang-analyzer-valist.Uninitialized)

const char* skip_annotation(const char* format) noexcept {
  if (*format != '<') return format;
  const char* end = std::strchr(format, '>');
  return end == nullptr ? format + std::strlen(format) : end + 1;
}

}  // namespace

void format_message(char* output, const char* format, std::va_list arguments) noexcept {
  if (output == nullptr) return;
  Message message{output};
  // A parameter of this type may be a mere pointer; the copy is the real thing everywhere.
  va_list taken;
  va_copy(taken, arguments);
  const char* next = format == nullptr ? "" : format;
  while (*next != '\0' && !message.full()) {
    if (next[0] != '%' || next[1] == '\0') {
      message.add(*next++);
      continue;
    }
    if (kConversions.find(next[1]) == std::string_view::npos) {
      message.add(std::string_view{next, 2});
      next += 2;
      continue;
    }
    convert(next[1], &taken, message);
    next = skip_annotation(next + 2);
  }
  va_end(taken);
  message.terminate();
}

}  // namespace sit

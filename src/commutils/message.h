// The message formatter.
#pragma once

#include <cstdarg>

namespace sit {

// As msgsub.
void format_message(char* output, const char* format, std::va_list arguments) noexcept;

}  // namespace sit

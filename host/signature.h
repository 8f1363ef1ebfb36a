// From a function's declared type: how its arguments are read from texts and how it is called.
#pragma once

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "catalogue.h"

namespace host {

// Who frees a text that a call returns.
enum class Owner { kPlugin, kCaller };

// Whether the buffer of a call also brings something.
enum class Buffer { kFilled, kChanged };

// Arguments that may be null say so in their name; the user writes "-" for null.
inline bool is_null(const std::string& name, const std::string& given) {
  return given == "-" && name.ends_with(" or null");
}

// An argument as the user writes it.
template <typename Type>
struct Argument {
  static_assert(std::is_integral_v<Type>);
  static std::string type() {
    return (std::is_signed_v<Type> ? "" : "unsigned ") + std::to_string(sizeof(Type) * 8) +
           "-bit integer";
  }
  Argument(const std::string& name, const std::string& given) {
    const char* end = given.data() + given.size();
    const auto [stop, error] = std::from_chars(given.data(), end, value);
    if (error != std::errc{} || stop != end) {
      throw UsageError("argument \"" + name + "\" must be one " + type() + ", not \"" + given +
                       "\"");
    }
  }
  [[nodiscard]] Type pass() const { return value; }
  Type value{};
};

template <>
struct Argument<const char*> {
  static std::string type() { return "text"; }
  Argument(const std::string& name, const std::string& given)
      : value(is_null(name, given) ? std::nullopt : std::optional(given)) {}
  [[nodiscard]] const char* pass() const { return value ? value->c_str() : nullptr; }
  std::optional<std::string> value;
};

// A buffer that the call fills; the host brings it. Its text states its capacity, for the call
// that asks.
template <>
struct Argument<char*> {
  static constexpr std::size_t kCapacity = 65535;
  static std::string type() { return "text"; }
  Argument() = default;
  Argument(const std::string& /*name*/, const std::string& given) : value(given) {
    value.resize(kCapacity);
  }
  char* pass() { return value.data(); }
  std::string value = std::string(kCapacity, ' ');
};

template <typename Signature, Owner owner, Buffer buffer>
struct SignatureOf;

template <typename Result, typename... Types, Owner owner, Buffer buffer>
struct SignatureOf<Result(Types...) noexcept, owner, buffer> {
  template <typename Type>
  static constexpr bool kIsBuffer = std::is_same_v<Type, char*>;
  template <typename Type>
  static constexpr bool kIsGiven = !kIsBuffer<Type> || buffer == Buffer::kChanged;
  static constexpr bool kFillsBuffer = (kIsBuffer<Types> || ...);

  static std::vector<std::string> argument_types() {
    std::vector<std::string> types;
    (add_type<Types>(types), ...);
    return types;
  }

  static Outcome call(const Plugin& plugin, const Entry& entry,
                      [[maybe_unused]] std::span<const std::string> given) {
    [[maybe_unused]] std::size_t next = 0;
    std::tuple<Argument<Types>...> arguments{read<Types>(entry, given, next)...};
    auto* function = plugin.function<Result(Types...) noexcept>(entry.name);
    return std::apply([function](auto&... argument) { return outcome(function, argument...); },
                      arguments);
  }

 private:
  template <typename Type>
  static Argument<Type> read(const Entry& entry, std::span<const std::string> given,
                             std::size_t& next) {
    if constexpr (kIsGiven<Type>) {
      const std::size_t index = next++;
      return {entry.argument_names.at(index), given[index]};
    } else {
      return {};
    }
  }

  template <typename Type>
  static void add_type(std::vector<std::string>& types) {
    if constexpr (kIsGiven<Type>) types.push_back(Argument<Type>::type());
  }

  static Outcome outcome(Result (*function)(Types...) noexcept, Argument<Types>&... arguments) {
    Outcome outcome;
    if constexpr (std::is_void_v<Result>) {
      function(arguments.pass()...);
      if constexpr (kFillsBuffer) outcome.text = buffer_text(arguments...);
    } else if constexpr (std::is_same_v<Result, char*>) {
      char* text = function(arguments.pass()...);
      if (text != nullptr) outcome.text = text;
      if constexpr (owner == Owner::kCaller) std::free(text);
    } else {
      outcome.code = function(arguments.pass()...);
      if constexpr (kFillsBuffer) {
        if (*outcome.code == 0) outcome.text = buffer_text(arguments...);
      }
    }
    return outcome;
  }

  static std::string buffer_text(Argument<Types>&... arguments) {
    std::string text;
    const auto take = [&text]<typename Type>(Argument<Type>& argument) {
      if constexpr (kIsBuffer<Type>) text = argument.value.substr(0, argument.value.find('\0'));
    };
    (take(arguments), ...);
    return text;
  }
};

// Completes a catalogue entry from the function's declaration.
template <typename Signature, Owner owner = Owner::kPlugin, Buffer buffer = Buffer::kFilled>
Entry with_signature(Entry entry) {
  using Described = SignatureOf<Signature, owner, buffer>;
  entry.argument_types = Described::argument_types();
  entry.caller = &Described::call;
  return entry;
}

}  // namespace host

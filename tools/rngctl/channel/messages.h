#ifndef TOOLS_RNGCTL_CHANNEL_MESSAGES_H
#define TOOLS_RNGCTL_CHANNEL_MESSAGES_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <type_traits>

/// The messages between a parent and its child. Every message is a structure, declared once with
/// `RNGCTL_MESSAGE(Type, field...)` and used by both ends; enumerations and optional values may be
/// fields. A message with a missing field, or with a number that its enumeration does not have, is not
/// understood: there are no defaults.
///
/// Like NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE, but with templates: only the sources that encode or decode a message
/// compile its functions, not all that include its declaration.
#define RNGCTL_MESSAGE(Type, ...)                                              \
  template <typename Json>                                                     \
  void to_json(Json& nlohmann_json_j, const Type& nlohmann_json_t) {           \
    NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_TO, __VA_ARGS__))   \
  }                                                                            \
  template <typename Json>                                                     \
  void from_json(const Json& nlohmann_json_j, Type& nlohmann_json_t) {         \
    NLOHMANN_JSON_EXPAND(NLOHMANN_JSON_PASTE(NLOHMANN_JSON_FROM, __VA_ARGS__)) \
  }

/// Enumerations travel as numbers. Each says beside its declaration which value is its last:
/// `constexpr Step LastOf(Step) { return Step::kEnd; }`
template <typename Enum>
struct nlohmann::adl_serializer<Enum, std::enable_if_t<std::is_enum_v<Enum>>> {
  static void to_json(json& encoded, Enum value) { encoded = static_cast<int>(value); }
  static void from_json(const json& encoded, Enum& value) {
    const auto number = encoded.get<std::int64_t>();
    if (!encoded.is_number_integer() || number < 0 ||
        number > static_cast<std::int64_t>(LastOf(Enum{}))) {
      throw std::out_of_range("not a value of the enumeration");
    }
    value = static_cast<Enum>(number);
  }
};

template <typename Value>
struct nlohmann::adl_serializer<std::optional<Value>> {
  static void to_json(json& encoded, const std::optional<Value>& value) {
    encoded = value ? json(*value) : json();
  }
  static void from_json(const json& encoded, std::optional<Value>& value) {
    value = encoded.is_null() ? std::nullopt : std::optional<Value>(encoded.get<Value>());
  }
};

/// The bytes of a message. Texts need not be UTF-8: paths and what plug-ins say may be anything.
template <typename Message>
std::string Encode(const Message& message) {
  std::string bytes;
  nlohmann::json::to_cbor(nlohmann::json(message), bytes);
  return bytes;
}

/// The message in these bytes; nothing when they are not one of that type.
template <typename Message>
std::optional<Message> Decode(const std::string& bytes) {
  try {
    return nlohmann::json::from_cbor(bytes).get<Message>();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

#endif

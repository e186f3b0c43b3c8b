#include "openssl/module/parameters.h"

#include <cstring>

OSSL_PARAM* FindParameter(OSSL_PARAM* parameters, const char* name) {
  for (OSSL_PARAM* next = parameters; next && next->key; ++next) {
    if (std::strcmp(next->key, name) == 0) return next;
  }
  return nullptr;
}

int SetNumber(OSSL_PARAM* parameter, std::uint64_t number) {
  if (!parameter) return 1;
  const bool isNumber = parameter->data_type == OSSL_PARAM_INTEGER ||
                        parameter->data_type == OSSL_PARAM_UNSIGNED_INTEGER;
  const std::size_t size = parameter->data_size;
  if (!isNumber || (size != sizeof(std::uint32_t) && size != sizeof(std::uint64_t))) return 0;
  if (parameter->data) std::memcpy(parameter->data, &number, size);  // little-endian
  parameter->return_size = size;
  return 1;
}

int SetText(OSSL_PARAM* parameter, const char* text) {
  if (parameter->data_type != OSSL_PARAM_UTF8_STRING) return 0;
  parameter->return_size = std::strlen(text);
  if (!parameter->data) return 1;
  if (parameter->data_size <= parameter->return_size) return 0;
  std::memcpy(parameter->data, text, parameter->return_size + 1);
  return 1;
}

int SetConstant(OSSL_PARAM* parameter, const char* text) {
  if (!parameter) return 1;
  if (parameter->data_type != OSSL_PARAM_UTF8_PTR) return 0;
  if (parameter->data) *static_cast<const char**>(parameter->data) = text;
  parameter->return_size = std::strlen(text);
  return 1;
}

#include "openssl/module/provider.h"

#include "openssl/module/parameters.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

Provider::Provider(const OSSL_CORE_HANDLE* handle, const OSSL_DISPATCH* functions) : core(handle) {
  for (; functions->function_id != 0; ++functions) {
    if (functions->function_id == OSSL_FUNC_CORE_GET_PARAMS)
      getParams = OSSL_FUNC_core_get_params(functions);
    if (functions->function_id == OSSL_FUNC_CORE_NEW_ERROR)
      newError = OSSL_FUNC_core_new_error(functions);
    if (functions->function_id == OSSL_FUNC_CORE_VSET_ERROR)
      setError = OSSL_FUNC_core_vset_error(functions);
  }
  isChoiceValid = ReadParameter("kind", choice.kind) &&
                  ReadParameter("hardware-id", choice.hardwareId) &&
                  ReadParameter("from", choice.from);
}

// A parameter that is too long is not truncated, because the rest could name another generator.
bool Provider::ReadParameter(const char* name, DrawText& value) const {
  const char* text = nullptr;
  OSSL_PARAM parameters[] = {{name, OSSL_PARAM_UTF8_PTR, &text, 0, OSSL_PARAM_UNMODIFIED},
                             {nullptr, 0, nullptr, 0, 0}};
  if (!getParams || !getParams(core, parameters) || !text) return true;
  const int length = std::snprintf(value.text, sizeof value.text, "%s", text);
  return length >= 0 && static_cast<std::size_t>(length) < sizeof value.text;
}

bool Provider::Draw(void* buffer, std::size_t size) {
  DrawText reason = {
      "A parameter in the provider's section of OpenSSL's configuration is too long."};
  auto* const bytes = static_cast<unsigned char*>(buffer);
  bool isDrawn = isChoiceValid;
  for (std::size_t done = 0; isDrawn && done < size; done += kLargestDraw) {
    isDrawn = connection.Draw(choice, bytes + done,
                              std::min<std::size_t>(size - done, kLargestDraw), reason);
  }
  if (isDrawn) return true;
  ::explicit_bzero(buffer, size);
  RaiseError("%s", reason.text);
  return false;
}

void Provider::RaiseError(const char* format, ...) const {
  if (!newError || !setError) return;
  std::va_list arguments;
  va_start(arguments, format);
  newError(core);
  setError(core, kNoRandomBytes, format, arguments);
  va_end(arguments);
}

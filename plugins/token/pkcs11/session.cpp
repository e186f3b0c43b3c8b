#include "session.h"

Session::Session(CK_FUNCTION_LIST& functions, CK_SLOT_ID slot)
    : module(functions),
      opened(functions.C_OpenSession(slot, CKF_SERIAL_SESSION, nullptr, nullptr, &handle)) {}

Session::~Session() {
  if (opened == CKR_OK) module.C_CloseSession(handle);
}

// Modules return different results for a piece that is too large. The ones listed here always have other causes.
bool Session::MayAcceptLess(CK_RV result) {
  switch (result) {
    case CKR_CANCEL:
    case CKR_DEVICE_REMOVED:
    case CKR_FUNCTION_CANCELED:
    case CKR_FUNCTION_NOT_SUPPORTED:
    case CKR_SESSION_CLOSED:
    case CKR_SESSION_HANDLE_INVALID:
    case CKR_TOKEN_NOT_PRESENT:
    case CKR_TOKEN_NOT_RECOGNIZED:
    case CKR_USER_NOT_LOGGED_IN:
    case CKR_RANDOM_NO_RNG:
    case CKR_CRYPTOKI_NOT_INITIALIZED:
      return false;
    default:
      return true;
  }
}

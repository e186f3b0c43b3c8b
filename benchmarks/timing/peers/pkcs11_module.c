// A token module without a token, which can only be started and stopped.

#include <p11-kit/pkcs11.h>
#include <stddef.h>

static CK_RV Initialize(void* arguments) { return (void)arguments, CKR_OK; }
static CK_RV Finalize(void* reserved) { return (void)reserved, CKR_OK; }
static CK_RV GetInfo(CK_INFO* info) { return (void)info, CKR_FUNCTION_NOT_SUPPORTED; }

__attribute__((visibility("default"))) CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list);

static CK_FUNCTION_LIST functions = {
    .version = {2, 40},
    .C_Initialize = Initialize,
    .C_Finalize = Finalize,
    .C_GetInfo = GetInfo,
    .C_GetFunctionList = C_GetFunctionList,
};

CK_RV C_GetFunctionList(CK_FUNCTION_LIST** list) {
  *list = &functions;
  return CKR_OK;
}

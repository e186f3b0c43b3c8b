#ifndef RNGAGGREGATOR_AGGREGATOR_C_H
#define RNGAGGREGATOR_AGGREGATOR_C_H

/// \file
/// The interface of the library for C, from C99 on. The functions and variables are those of
/// aggregator.h, and the types have the same names and the same layout:
///
///     Initialize(GetDefaultSettings());
///     IRngProvider* const rng = GetRng(rngUnixDev);
///     const bool hasKey = rng && rng->operations->Generate(rng, key, sizeof key);
///     ShutDown();
///
/// aggregator.h and provider.h have the whole contract: what each operation does, who owns what, from
/// which threads it may be called, how it fails. It applies here, too. This header summarises it, and
/// says what is different in C.
///
/// Objects. The first word of a provider or of a settings object is a pointer to its operations,
/// which are functions in a fixed order. Each takes the object as its first argument.
///
/// Objects of your own. A host may implement the settings, and a plug-in written in C its provider.
/// Define every operation, put the object first in a structure of your own, and add what you like
/// after it:
///
///     typedef struct {
///       IRngSettings settings;  // first, so that both have the same address
///       const char* type;
///     } MySettings;
///
///     static const char* GetType(IRngSettings* settings) { return ((MySettings*)settings)->type; }
///     // ... and the four others
///     static const RngSettingsOperations operations = {
///         .GetType = GetType, .SetType = SetType, .GetHardwareId = GetHardwareId,
///         .SetHardwareId = SetHardwareId, .GetDsdrFilePath = GetDsdrFilePath};
///     static MySettings mine = {{&operations}, "unixdev"};
///
///     Initialize(&mine.settings);
///
/// Such an object has no C++ type information: code must not use `dynamic_cast` or `typeid` on it.
///
/// Types. `bool`, from stdbool.h, is one byte that holds 0 or 1, as in C++. Never cast a function that
/// returns `int` to one of these types: any other value would be undefined.
///
/// Exceptions. The library catches nothing, and neither can C. When a plug-in throws and no C++
/// function further up in the stack catches it, `std::terminate` ends the process with SIGABRT; no
/// cleanup runs. A host that must survive that draws in a child process, for example with
/// `rngctl read`, or makes its calls from a C++ source file that catches. If C++ code does catch, the
/// exception unwinds your C functions and skips the rest of each. Compile them with `-fexceptions`:
/// only then do the handlers of `__attribute__((cleanup))` run.

#ifdef __cplusplus
#error "This header is for C. In C++, include <rngaggregator/aggregator.h>."
#endif

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

/// The largest size in bytes, including the terminator, of a name or device that can be the default.
#define kRngNameSize ((size_t)18)

// Capability bits, which `GetFlags` of a provider returns and `GetAvailableRng` takes as its mask.
#define kRngCapabilityHardware UINT32_C(0x01)         ///< the source is a hardware device
#define kRngCapabilityNeedsUser UINT32_C(0x02)        ///< the user takes part in a draw
#define kRngCapabilityOperatingSystem UINT32_C(0x04)  ///< the system's own generator
#define kRngCapabilityPrerecorded UINT32_C(0x08)      ///< reads data recorded beforehand
#define kRngCapabilityMayBlock UINT32_C(0x10)         ///< a draw may wait for a long time

// The bits of the mask of `GetDefaultRng`, in the order in which the kinds are tried.
#define kDefaultFallbackBio UINT32_C(1)     ///< "bio", if it is loaded
#define kDefaultFallbackBioQt UINT32_C(2)   ///< "bioqt", if it is loaded
#define kDefaultFallbackBioX11 UINT32_C(8)  ///< "unixx11", if it is loaded
#define kDefaultFallbackBioKb UINT32_C(4)   ///< "biokbd", loaded or not

/// A settings object: one of the host's own, or that of the library from `GetDefaultSettings`.
typedef struct IRngSettings IRngSettings;

/// A generator. Hosts get it from `GetRng` or `GetAvailableRng` and borrow it until the final
/// `ShutDown`. A plug-in in C makes it and returns its address from the factory.
typedef struct IRngProvider IRngProvider;

/// The operations of a settings object, in the order of their slots. None is ever null. Providers
/// may call them from any thread while the library is started. Texts belong to the object.
typedef struct RngSettingsOperations {
  /// Slot 0. Returns the configured kind, or null. Callers treat "" as null.
  const char* (*GetType)(IRngSettings* settings);

  /// Slot 1. Stores the kind. Returns true when it was stored.
  bool (*SetType)(IRngSettings* settings, const char* type);

  /// Slot 2. Returns the configured device of that kind, or null. Callers treat "" as null.
  const char* (*GetHardwareId)(IRngSettings* settings);

  /// Slot 3. Stores the device; null stores none. Returns true when it was stored.
  bool (*SetHardwareId)(IRngSettings* settings, const char* hardwareId);

  /// Slot 4. Returns the path of the data file of the kind "dsdr".
  const char* (*GetDsdrFilePath)(IRngSettings* settings);
} RngSettingsOperations;

/// What all settings objects begin with. The rest of an object belongs to whoever made it.
struct IRngSettings {
  const RngSettingsOperations* operations;  ///< never null
};

/// The operations of a provider, in the order of their slots. None is ever null. Hosts call slots 0
/// to 8, from any thread while the provider is listed. Slots 9 and 10 are for the library alone.
///
/// The first three write a text. With a null `buffer` they return the size that it needs with its
/// terminator, or 0 when there is none. Then pass a zero-filled buffer of exactly that size, and use
/// the text only if the same size is returned again.
typedef struct RngProviderOperations {
  /// Slot 0. The name by which `GetRng` finds the provider.
  int32_t (*GetName)(IRngProvider* provider, char* buffer);

  /// Slot 1. A description for people: one line in UTF-8.
  int32_t (*GetDescription)(IRngProvider* provider, char* buffer);

  /// Slot 2. The device in use, at most 17 bytes.
  int32_t (*GetHardwareId)(IRngProvider* provider, char* buffer);

  /// Slot 3. Selects the device for later draws; null or "" selects any. Returns false, and keeps
  /// the earlier choice, when there is no such device.
  bool (*SelectDevice)(IRngProvider* provider, const char* hardwareId);

  /// Slot 4. Fills `buffer` with `size` random bytes. Check the result every time: after false the
  /// whole buffer is zero.
  bool (*Generate)(IRngProvider* provider, void* buffer, size_t size);

  /// Slot 5. Returns true when the provider is usable with its settings.
  bool (*IsAvailable)(IRngProvider* provider);

  /// Slot 6. Runs the health test of the source now. Returns true when it passed.
  bool (*SelfTest)(IRngProvider* provider);

  /// Slot 7. Ends every draw of this provider that waits for a user or a device.
  void (*Cancel)(IRngProvider* provider);

  /// Slot 8. Returns the capability bits. `GetAvailableRng` never lists a provider without any.
  uint32_t (*GetFlags)(IRngProvider* provider);

  /// Slot 9, during the start. Receives the settings of the host, possibly null.
  void (*SetSettings)(IRngProvider* provider, IRngSettings* settings);

  /// Slot 10, during the start or the final stop. Ends the use of the object.
  void (*Release)(IRngProvider* provider);
} RngProviderOperations;

/// What all providers begin with. The rest of an object belongs to the plug-in.
struct IRngProvider {
  const RngProviderOperations* operations;  ///< never null
};

/// The result of `GetDefaultRng`: 36 bytes, both texts NUL-terminated, all unused bytes zero.
typedef struct DefaultRngInfo {
  char type[kRngNameSize];        ///< the kind of generator, for `GetRng`
  char hardwareId[kRngNameSize];  ///< the device, for `SelectDevice`; "" means any
} DefaultRngInfo;

#pragma GCC visibility push(default)

// The names of the kinds. Host and library share these variables, and a host may write them.
extern const char* rngBioCore;      ///< "biocore"
extern const char* rngBioX11;       ///< "unixx11", interactive, needs an X display
extern const char* rngUnixDev;      ///< "unixdev"
extern const char* rngBioKb;        ///< "biokbd", interactive
extern const char* rngGrandmaster;  ///< "grandmaster"
extern const char* rngDsdr;         ///< "dsdr"
extern const char* rngEsmartGost;   ///< "EsmartGost"
extern const char* rngRuToken;      ///< "Rutoken"
extern const char* rngJacartaGost;  ///< "JacartaGost"
extern const char* rngSobol;        ///< "sobol"
extern const char* rngAccord;       ///< "accord"
extern const char* rngBioQt;        ///< "bioqt", interactive, needs an X display
extern const char* rngBioWin;       ///< "bio", interactive; the library loads no plug-in for it

/// Starts the library, or counts one more start. `settings` may be null; if it is not, the object
/// must live while the library is started, and as long after that as `SetDefaultRng` may be called.
void Initialize(IRngSettings* settings);

/// Undoes one start. Undoing the last one releases every provider: all pointers to them become invalid.
void ShutDown(void);

/// True when the library is started.
bool IsInitialized(void);

/// Stores in `providers` the loaded providers whose flags share a bit with `mask`, and returns their number. With a
/// null `providers` it only counts. The array must have room for all of them.
int32_t GetAvailableRng(IRngProvider** providers, uint32_t mask);

/// Returns the provider of that name, borrowed until the final `ShutDown`, or null when there is none
/// or the library is not started. `name` must not be null.
IRngProvider* GetRng(const char* name);

/// Returns 1 when `name` is a kind in which the user takes part, else 0. It must not be null.
int32_t IsInteractiveRng(const char* name);

/// Reports the configured generator, or the first fallback that `mask` accepts. Returns 1 when it
/// filled `info`, else 0. The configured generator need not be loaded.
int32_t GetDefaultRng(DefaultRngInfo* info, uint32_t mask);

/// Stores the default through the settings of the last start. `hardwareId` may be null for any
/// device. Returns true when both were stored.
bool SetDefaultRng(const char* type, const char* hardwareId);

/// Returns the settings object of the library, which keeps the default in the file `rng.ini`. Never
/// null, and valid as long as the library is loaded.
IRngSettings* GetDefaultSettings(void);

#pragma GCC visibility pop

#endif

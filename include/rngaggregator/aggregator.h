#ifndef RNGAGGREGATOR_AGGREGATOR_H
#define RNGAGGREGATOR_AGGREGATOR_H

/// \file
/// The interface of the aggregator of random-number-generator providers for hosts.
///
///     Initialize(GetDefaultSettings());
///     IRngProvider* const rng = GetRng(rngUnixDev);
///     const bool hasKey = rng && rng->Generate(key, sizeof key);
///     ShutDown();
///
/// Plug-ins that are missing or unusable are skipped silently; the aggregator starts even without
/// any plug-in. The functions report errors only through their results.
///
/// Threads: `Initialize` and `ShutDown` may be called from any thread and wait for each other. All
/// other functions take no lock and may run concurrently with each other, but not with the
/// `Initialize` that starts the aggregator or the `ShutDown` that stops it: finish the start before
/// the first query, and the last query before the stop. `GetDefaultRng` and `SetDefaultRng` are as
/// safe as the settings object: with the built-in one, call them from one thread at a time.
///
/// Exceptions: the functions catch none. Exceptions of plug-ins and of the settings object, and
/// `std::bad_alloc`, pass through. Locking can throw `boost::lock_error`.

#include <rngaggregator/provider.h>

/// The result of `GetDefaultRng`: 36 bytes, both texts NUL-terminated, all unused bytes zero.
struct DefaultRngInfo {
  char type[kRngNameSize];        ///< the kind of generator, for `GetRng`
  char hardwareId[kRngNameSize];  ///< the device, for `IRngProvider::SelectDevice`; "" means any
};
static_assert(sizeof(DefaultRngInfo) == 36, "the record is part of the binary contract");

/// The kinds that `GetDefaultRng` may fall back to, as bits of its mask, in the order in which they
/// are tried. (They are not capability bits: see `GetAvailableRng` for those.)
constexpr std::uint32_t kDefaultFallbackBio = 1;     ///< "bio", if it is loaded
constexpr std::uint32_t kDefaultFallbackBioQt = 2;   ///< "bioqt", if it is loaded
constexpr std::uint32_t kDefaultFallbackBioX11 = 8;  ///< "unixx11", if it is loaded
constexpr std::uint32_t kDefaultFallbackBioKb = 4;   ///< "biokbd", loaded or not

#pragma GCC visibility push(default)
extern "C" {

/// The names of the kinds, so that hosts need not write them out. Host and library share these
/// variables, and the library reads them afresh whenever it compares with them. A host may point
/// one at a string of its own, which must outlive its use, while no other thread calls the library.
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
extern const char* rngBioWin;       ///< "bio", interactive; this library loads no plug-in for it

/// Increments the start count. When the count becomes 1, stores `settings`, loads every plug-in
/// that is found and keeps the providers that are available. Otherwise it does nothing more, and
/// `settings` is ignored.
///
/// `settings` may be null: the providers then get null, and nothing is configured or stored.
///
/// Ownership: `settings` remains the caller's. It must live while the aggregator is started, and as
///            long after that as `SetDefaultRng` may be called.
/// Threads:   any; holds the lock throughout. Never call it from a plug-in: provider.h says why.
/// Failure:   reports no errors. An exception leaves the count raised, the settings stored and the
///            providers of the earlier plug-ins listed; match it with a call of `ShutDown`. Throws
///            `boost::lock_error`, with nothing changed, when the lock cannot be taken.
void Initialize(IRngSettings* settings);

/// Decrements the start count. When the count becomes 0, releases every provider and closes its
/// plug-in, in the order in which they were loaded.
///
/// An unmatched call is not rejected: the count goes negative, and that many later calls of
/// `Initialize` only bring it back to 0.
///
/// Ownership: when the count becomes 0, all provider pointers become invalid.
/// Threads:   any; holds the lock throughout. Never call it from a plug-in: provider.h says why.
/// Failure:   when a provider's `Release` throws, the exception passes through. The count is 0, the
///            providers before it are released, and it and those after it stay listed with their
///            libraries open. Throws `boost::lock_error` as `Initialize` does.
void ShutDown();

/// True when the start count is greater than 0. Threads: any, unlocked.
bool IsInitialized();

/// Lists the loaded providers whose capability flags share a bit with `mask`.
///
/// Stores the matches in `providers`, in the order of the table in provider.h, and returns their
/// number. With a null `providers` it only counts: call once to size the array, once to fill it.
/// There is no capacity argument. A mask of 0 matches nothing.
///
/// Ownership: the pointers are borrowed, valid until the final `ShutDown`. Never release them.
/// Threads:   any, unlocked; not during the starting `Initialize` or the final `ShutDown`.
/// Failure:   0 when nothing matches or nothing is listed.
std::int32_t GetAvailableRng(IRngProvider** providers, std::uint32_t mask);

/// Returns the first loaded provider that currently reports exactly the name `name`
/// (NUL-terminated, not null, case-sensitive). An empty name finds the first provider that reports no
/// name.
///
/// Ownership: the pointer is borrowed, valid until the final `ShutDown`. Never call Release on it.
/// Threads:   any, unlocked; not during the starting `Initialize` or the final `ShutDown`.
/// Failure:   null when there is none or the aggregator is not started. Throws `std::bad_alloc`
///            when memory runs out, or when a provider reports a negative size.
IRngProvider* GetRng(const char* name);

/// Returns 1 when `name` (NUL-terminated, not null) equals one of `rngBioWin`, `rngBioQt`,
/// `rngBioX11` and `rngBioKb`, the kinds in which the user takes part, loaded or not; else 0.
/// Threads: any, unlocked.
std::int32_t IsInteractiveRng(const char* name);

/// Reports the default generator: the configured one, or the first acceptable fallback. Returns 1
/// when it filled `info`.
///
/// A configured kind is reported unchanged, whether or not it is loaded. When none is configured,
/// `mask` (of `kDefaultFallback` bits) says which interactive kinds are acceptable: "bio", "bioqt"
/// and "unixx11" if they are loaded, and "biokbd" in any case.
///
/// Ownership: `info` is the caller's; both texts are copies.
/// Threads:   as the settings object allows, unlocked; not during the starting `Initialize` or the
///            final `ShutDown`.
/// Failure:   0, also for a null `info`. The record is untouched when the aggregator is not
///            started. It is all zero when nothing is configured or acceptable, or when a text is
///            longer than 17 bytes.
std::int32_t GetDefaultRng(DefaultRngInfo* info, std::uint32_t mask);

/// Stores the default through the settings of the last start, which must still exist: first `type`,
/// then `hardwareId`. Both are NUL-terminated, at most 17 bytes, and read only during the
/// call. A null `hardwareId` stores none. `type` need not be loaded or known. The function also
/// works after the stop. Returns true when the settings object accepted both.
///
/// Threads:   as the settings object allows, unlocked; two concurrent calls may mix their values,
///            and with the built-in object corrupt the file.
/// Failure:   false, with nothing stored, when `type` is null, a text is too long, there has been no
///            start, or the last start had null settings. Also false when a store fails; a type
///            stored before that stays. The built-in object does not notice a full disk, nor that a
///            text with "=", a line break or blanks at its ends is not read back unchanged: check
///            with `GetDefaultRng`.
bool SetDefaultRng(const char* type, const char* hardwareId);

/// Returns the built-in settings object, which keeps the default in the file `rng.ini`. The pointer
/// is never null and the same at every call; it is valid as long as the library is loaded.
/// Threads: any, unlocked.
IRngSettings* GetDefaultSettings();

}  // extern "C"
#pragma GCC visibility pop

#endif

#ifndef RNGAGGREGATOR_AGGREGATOR_H
#define RNGAGGREGATOR_AGGREGATOR_H

/// \file
/// The aggregator of random-number-generator providers, as a host sees it.
///
///     Initialize(GetDefaultSettings());
///     IRngProvider* const rng = GetRng(rngUnixDev);
///     const bool hasKey = rng && rng->Generate(key, sizeof key);
///     ShutDown();
///
/// Plug-ins that are missing or unusable are skipped silently; with none at all the aggregator is
/// started all the same. No function reports an error except by its result.
///
/// Threads: `Initialize` and `ShutDown` may be called from any thread and wait for each other. All
/// other functions take no lock and may run concurrently with each other, but not with the
/// `Initialize` that starts the aggregator nor with the `ShutDown` that stops it: finish the start
/// before the first query, and the last query before the stop. `GetDefaultRng` and `SetDefaultRng`
/// are as safe as the settings object: with the built-in one, call them from one thread at a time.
///
/// Exceptions: the functions catch none. Those of plug-ins and of the settings object, and
/// `std::bad_alloc`, pass through; the lock itself can raise `boost::lock_error`.

#include <rngaggregator/provider.h>

/// The answer of `GetDefaultRng`: 36 bytes, both texts NUL-terminated, all unused bytes zero.
struct DefaultRngInfo {
  char type[kRngNameSize];        ///< the kind of generator, for `GetRng`
  char hardwareId[kRngNameSize];  ///< the device, for `IRngProvider::SelectDevice`; "": any
};
static_assert(sizeof(DefaultRngInfo) == 36, "the record is part of the binary contract");

/// The kinds that `GetDefaultRng` may fall back to, as bits of its mask. They are tried in the
/// order in which they stand here. (They are not capability bits: see `GetAvailableRng` for those.)
constexpr std::uint32_t kDefaultFallbackBio = 1;     ///< "bio", if it is loaded
constexpr std::uint32_t kDefaultFallbackBioQt = 2;   ///< "bioqt", if it is loaded
constexpr std::uint32_t kDefaultFallbackBioX11 = 8;  ///< "unixx11", if it is loaded
constexpr std::uint32_t kDefaultFallbackBioKb = 4;   ///< "biokbd", loaded or not

#pragma GCC visibility push(default)
extern "C" {

/// The names of the kinds, so that hosts need not write them out. The library reads the pointers
/// afresh whenever it compares with them, and they are one object for host and library: a host may
/// point one at a string of its own that outlives its use, while no other thread calls the library.
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
extern const char* rngBioWin;       ///< "bio", interactive; no plug-in of this library carries it

/// Adds one to the start count. When the count becomes 1, stores `settings`, loads every plug-in
/// that is found and keeps the providers that are available; at any other value it does nothing
/// more, and `settings` is ignored.
///
/// `settings` may be null: the providers then get null, and nothing is configured or stored.
///
/// Ownership: `settings` stays the caller's. It must live while the aggregator is started, and as
///            long after that as `SetDefaultRng` may be called.
/// Threads:   any; holds the lock throughout. Never call it from a plug-in that is being started or
///            released.
/// Failure:   cannot fail as a whole. An exception leaves the count raised, the settings stored and
///            the providers of the earlier plug-ins listed; balance it with `ShutDown`. Raises
///            `boost::lock_error`, with nothing changed, when the lock cannot be taken.
void Initialize(IRngSettings* settings);

/// Takes one from the start count. When the count becomes 0, releases every provider and closes its
/// plug-in, in the order in which they were loaded.
///
/// A call too many is not refused: the count becomes negative, and as many calls of `Initialize` do
/// nothing but pay that back before one starts the aggregator again.
///
/// Ownership: every provider pointer handed out becomes invalid.
/// Threads:   any; holds the lock throughout. Never call it from a plug-in that is being started or
///            released.
/// Failure:   when a provider's `Release` throws, the exception passes through; the count is 0, the
///            providers before it are released, it and those after it stay listed with their
///            libraries open. Raises `boost::lock_error` as `Initialize` does.
void ShutDown();

/// True when the start count is greater than 0. Threads: any, unlocked.
bool IsInitialized();

/// Lists the loaded providers whose capability flags share a bit with `mask`.
///
/// Stores the matches in `providers`, in the order of the table in provider.h, and returns their
/// number. With a null `providers` it only counts: call once to size the array, once to fill it.
/// There is no capacity argument. A mask of 0 matches nothing.
///
/// Ownership: the pointers are borrowed, valid until the final `ShutDown`; never call Release on one.
/// Threads:   any, unlocked; not during the starting `Initialize` or the final `ShutDown`.
/// Failure:   0 when nothing matches or nothing is listed.
std::int32_t GetAvailableRng(IRngProvider** providers, std::uint32_t mask);

/// Finds the first loaded provider that now reports exactly the name `name` (NUL-terminated, not
/// null, case counts).
///
/// Ownership: the pointer is borrowed, valid until the final `ShutDown`. Never call Release on it.
/// Threads:   any, unlocked; not during the starting `Initialize` or the final `ShutDown`.
/// Failure:   null when there is none or nothing is started. `std::bad_alloc` when memory runs out,
///            also for a provider that asks for a negative size.
IRngProvider* GetRng(const char* name);

/// 1 when `name` (NUL-terminated, not null) equals one of `rngBioWin`, `rngBioQt`, `rngBioX11` and
/// `rngBioKb`, the kinds that need the user's participation, loaded or not; else 0.
/// Threads: any, unlocked.
std::int32_t IsInteractiveRng(const char* name);

/// Reports the default generator: what the settings say, or the first acceptable fallback.
///
/// A configured kind is reported as it stands, whether or not it is loaded. When none is
/// configured, `mask` (of `kDefaultFallback` bits) says which interactive kinds are acceptable:
/// "bio", "bioqt" and "unixx11" if they are loaded, and "biokbd" in any case.
///
/// Ownership: `info` is the caller's; both texts are copies.
/// Threads:   as the settings object allows, unlocked; not during the starting `Initialize` or the
///            final `ShutDown`.
/// Failure:   0, also for a null `info`. The record is untouched when nothing is started, and all
///            zero when nothing is configured or acceptable, or a text is longer than 17 characters.
std::int32_t GetDefaultRng(DefaultRngInfo* info, std::uint32_t mask);

/// Stores the default through the settings of the last start, which must still exist: first `type`,
/// then `hardwareId`. Both are NUL-terminated, at most 17 characters, and read during the call
/// only. A null `hardwareId` stores none. `type` need not be loaded nor known. Works also when
/// stopped.
///
/// Threads:   as the settings object allows, unlocked; two calls at once may mix their values, and
///            with the built-in object spoil the file.
/// Failure:   false, nothing stored, when `type` is null, a text is too long or no start has stored
///            settings; false when a store fails, and a type stored before that stays. The built-in
///            object does not notice a full disk, nor that a text with "=", a line break or blanks
///            at its ends does not read back: ask `GetDefaultRng` to be sure.
bool SetDefaultRng(const char* type, const char* hardwareId);

/// The built-in settings object, which keeps the default in the file `rng.ini`. The same pointer at
/// every call; it lives as long as the library is loaded. Never null. Threads: any, unlocked.
IRngSettings* GetDefaultSettings();

}  // extern "C"
#pragma GCC visibility pop

#endif

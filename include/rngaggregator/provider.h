#ifndef RNGAGGREGATOR_PROVIDER_H
#define RNGAGGREGATOR_PROVIDER_H

/// \file
/// The contract between the aggregator, its plug-ins and the hosts that draw from them.
///
/// A plug-in is a shared library `librng<kind>.so` that exports one function, its factory. The
/// aggregator opens the library, calls the factory, and calls the provider in this order:
///
///     factory() -> SetSettings -> IsAvailable -> true:  listed ... Release -> library closed
///                                             -> false: Release -> library closed
///
/// Each kind has a fixed library file and factory:
///
///     kind         library file          factory            loaded only with an X display
///     bioqt        librngbioqt.so        GetBioQtRng        yes
///     unixx11      librngbiox11.so       GetBioX11Rng       yes
///     dsdr         librngdsdr.so         GetDsdrRng
///     accord       librngaccord.so       GetAccordRng
///     sobol        librngsobol.so        GetSobolRng
///     JacartaGost  librngjacartagost.so  GetJacartaGostRng
///     Rutoken      librngrutoken.so      GetRuTokenRng
///     EsmartGost   librngesmartgost.so   GetEsmartGostRng
///     biokbd       librngbiokb.so        GetBioKbRng
///     unixdev      librngunixdev.so      GetUnixDevRng
///     grandmaster  librnggrandmaster.so  GetGrandmasterRng
///     biocore      librngbiocore.so      GetBioCoreRng
///
/// Slots. Both interfaces are binary contracts between separately built libraries: the order of the
/// operations is the layout of the virtual table, and nothing is ever inserted or removed.
///
/// Thread tags, one per operation:
///
///     [start-up]    in the thread of the host's `Initialize`, under the aggregator's lock
///     [shut-down]   in the thread of the host's final `ShutDown`, under the aggregator's lock
///     [any thread]  by the aggregator or by hosts while the provider is listed, without a lock,
///                   possibly from several threads at once; also by other plug-ins under the lock
///
/// Starting and stopping. A plug-in may call the aggregator's queries, even under the lock. It must
/// never call `Initialize` or `ShutDown`, be it in an operation or on a thread of its own:
///
/// - Under the lock the call never returns, because the lock is not recursive. The same happens
///   when `Release` waits for a thread that makes the call.
/// - From any other operation, for example a draw, `Initialize` raises the start count and returns.
///   Without its `ShutDown`, the host's last stop then releases nothing. A `ShutDown` without its
///   `Initialize` may be the final one: it releases the provider and closes the library whose code
///   made the call, and the return from it crashes.
///
/// The process belongs to the host. A plug-in that changes process-wide state (signal actions and
/// masks, the umask, the working directory, the locale, timers, the environment, the standard
/// streams, limits) restores it in `Release`. It leaves behind no child process, and no pointer into
/// its own memory.
///
/// Exceptions. The aggregator catches nothing: whatever a plug-in throws reaches the host, possibly
/// after the aggregator has closed the plug-in's library. So throw nothing, or at most the standard
/// library's own types: a class defined in the plug-in is gone once its library is closed. So
/// are all classes of a C++ library that is linked statically into the plug-in.

#include <cstddef>
#include <cstdint>

/// The largest size in bytes, including the terminator, of a provider name or hardware identifier
/// that can be stored or reported as the default: at most 17 bytes. `GetName` may report a
/// longer name, and `GetRng` finds it, but it can never be the default.
constexpr std::size_t kRngNameSize = 18;

/// Capability bits, which `IRngProvider::GetFlags` returns and `GetAvailableRng` takes as its mask.
/// The aggregator itself does not interpret them. (The mask of `GetDefaultRng` has different bits,
/// the `kDefaultFallback` constants of aggregator.h.)
constexpr std::uint32_t kRngCapabilityHardware = 0x01;         ///< the source is a hardware device
constexpr std::uint32_t kRngCapabilityNeedsUser = 0x02;        ///< the user takes part in a draw
constexpr std::uint32_t kRngCapabilityOperatingSystem = 0x04;  ///< the system's own generator
constexpr std::uint32_t kRngCapabilityPrerecorded = 0x08;      ///< reads data recorded beforehand
constexpr std::uint32_t kRngCapabilityMayBlock = 0x10;         ///< a draw may wait for a long time

/// The settings that a host passes to `Initialize`, and the aggregator to every provider. A host
/// gets the built-in object from `GetDefaultSettings` or implements its own.
///
/// Strings: a string that a Get operation returns is NUL-terminated, owned by the settings object
/// and valid at least until the next call of the same operation on the same object. A call of one
/// Get operation leaves the results of the others valid. Null means that nothing is configured.
///
/// Ownership: a settings object is never destroyed through this interface. Its creator keeps it
/// alive while the aggregator is started with it, and after that as long as `SetDefaultRng` may be
/// called.
///
/// Threads: the queries call it from the host's threads, providers from any thread. The built-in
/// object does not support concurrent calls of the same operation.
class IRngSettings {
 public:
  /// Slot 0. Returns the configured kind of generator, for example "unixdev", or null. Callers
  /// treat "" as null. The built-in object reads the file afresh at each call.
  virtual const char* GetType() = 0;

  /// Slot 1. Stores the kind. `type` is read only during the call. The built-in object stores an
  /// empty value for a null `type`, and creates missing directories above its file. Returns true
  /// when the value was stored, as far as the object can tell: the built-in one does not notice a
  /// full disk.
  virtual bool SetType(const char* type) = 0;

  /// Slot 2. Returns the configured device of that kind, or null. Callers treat "" as null.
  virtual const char* GetHardwareId() = 0;

  /// Slot 3. Stores the device. `hardwareId` is read only during the call; null stores none. The
  /// built-in object creates no directories here: store the type first. Returns true when stored.
  virtual bool SetHardwareId(const char* hardwareId) = 0;

  /// Slot 4. Returns the full path of the data file of the kind "dsdr". The built-in object
  /// computes it at the first call and keeps it for its life; it never opens the file and never
  /// returns null.
  virtual const char* GetDsdrFilePath() = 0;

 protected:
  ~IRngSettings() = default;
};

/// One generator, implemented by a plug-in, used by the aggregator and by hosts.
///
/// Ownership: the plug-in creates it and ends it in `Release`. Only the aggregator decides when to
/// call that; a host borrows the pointer until the final `ShutDown`.
///
/// Text operations (`GetName`, `GetDescription`, `GetHardwareId`) share a protocol of two calls.
/// With a null `buffer` they return the size in bytes that the text needs, including the
/// terminator, or 0 when there is none. Then the caller passes a zero-filled buffer of exactly that
/// size; the operation writes the NUL-terminated text into it and returns the same size. If the
/// second size differs from the first, the text must not be used. A negative size is outside the
/// contract.
class IRngProvider {
 public:
  /// Slot 0 [any thread]. The provider name by which `GetRng` finds it, for example "unixdev".
  virtual std::int32_t GetName(char* buffer) = 0;

  /// Slot 1 [any thread]. A description for people: UTF-8, one line, without line breaks.
  virtual std::int32_t GetDescription(char* buffer) = 0;

  /// Slot 2 [any thread]. The identifier of the device in use, at most 17 bytes. Returns 0
  /// when the kind has no devices or none is in use.
  virtual std::int32_t GetHardwareId(char* buffer) = 0;

  /// Slot 3 [any thread]. Selects the device for later draws; null or "" selects any. `hardwareId`
  /// is read only during the call. Returns false, and keeps the earlier choice, when there is no
  /// such device.
  virtual bool SelectDevice(const char* hardwareId) = 0;

  /// Slot 4 [any thread]. Fills `buffer` with `size` random bytes. Returns true when the whole
  /// buffer is random. Returns false when the draw failed or was cancelled; the whole buffer is
  /// then zero. A size of 0 succeeds and touches nothing; only then may `buffer` be null.
  virtual bool Generate(void* buffer, std::size_t size) = 0;

  /// Slot 5 [start-up, any thread]. Returns true when the provider is usable with its settings. The
  /// aggregator calls it once, after `SetSettings`, and releases a provider that returns false.
  virtual bool IsAvailable() = 0;

  /// Slot 6 [any thread]. Runs the health test of the source now. Returns true when it passed.
  virtual bool SelfTest() = 0;

  /// Slot 7 [any thread]. Ends every `Generate` of this provider that waits for a user or a device;
  /// those return false. If none waits it does nothing. It never affects later draws.
  virtual void Cancel() = 0;

  /// Slot 8 [any thread]. Returns the capability bits (`kRngCapability` constants). The aggregator
  /// calls it afresh each time; `GetAvailableRng` never lists a provider without any bit.
  virtual std::uint32_t GetFlags() = 0;

  /// Slot 9 [start-up]. Receives the settings of the host, possibly null. Called exactly once,
  /// before any other operation. The provider may keep the pointer until `Release`.
  virtual void SetSettings(IRngSettings* settings) = 0;

  /// Slot 10 [start-up, shut-down]. Ends the use of the object. The library is closed right after,
  /// so nothing that needs its code may keep running: no thread, no handler, no callback. Called
  /// once. Not called when `SetSettings` or `IsAvailable` threw, when memory ran out while the
  /// aggregator added the provider to its list, or when the host unloads the aggregator without its
  /// final `ShutDown`. Called again by the next final `ShutDown` only if it threw.
  virtual void Release() = 0;

 protected:
  ~IRngProvider() = default;
};

/// The factory that a plug-in exports, unmangled, under the name that belongs to its kind
/// [start-up].
///
/// Returns the provider, or null when the library cannot provide one; the library is then closed.
/// The aggregator calls it once each time it loads the library. After a full stop and a new start
/// it is called again and must return a usable object again, the same or a new one.
extern "C" {
typedef IRngProvider* (*RngFactory)();
}

#pragma GCC visibility push(default)

// The factories, one for each kind. A plug-in defines the one for its own kind and calls none of
// the others: hosts and other plug-ins use `GetRng`. The definition inherits C linkage and default
// visibility from the declaration here, so its name is not mangled. A linker script can still hide
// it.
extern "C" {
IRngProvider* GetBioQtRng();        ///< the factory of "bioqt"
IRngProvider* GetBioX11Rng();       ///< the factory of "unixx11"
IRngProvider* GetDsdrRng();         ///< the factory of "dsdr"
IRngProvider* GetAccordRng();       ///< the factory of "accord"
IRngProvider* GetSobolRng();        ///< the factory of "sobol"
IRngProvider* GetJacartaGostRng();  ///< the factory of "JacartaGost"
IRngProvider* GetRuTokenRng();      ///< the factory of "Rutoken"
IRngProvider* GetEsmartGostRng();   ///< the factory of "EsmartGost"
IRngProvider* GetBioKbRng();        ///< the factory of "biokbd"
IRngProvider* GetUnixDevRng();      ///< the factory of "unixdev"
IRngProvider* GetGrandmasterRng();  ///< the factory of "grandmaster"
IRngProvider* GetBioCoreRng();      ///< the factory of "biocore"
}

/// Reports the devices that the plug-in sees, and its problems [after SetSettings, any thread].
/// Optional: a plug-in may define it as well as its factory. The aggregator never calls it. Tools
/// for administrators do, such as `rngctl list` and `rngctl doctor`, in a separate process.
///
/// The text is UTF-8. Each line ends with a line feed, which the last one may omit. A line has one
/// of two forms, with a single tab between its parts and no other control characters:
///
///     device<TAB>identifier<TAB>text   what `SelectDevice` accepts, and a description for people
///     problem<TAB>text                 why there is no device, or what else prevents a draw
///
/// Identifiers have 1 to 17 bytes and are unique. A problem says what is wrong, with the name
/// or path, and then what to do.
///
/// Result and sizing: two calls, as for the text operations of `IRngProvider`; at most 65536 bytes
/// with the terminator, 0 when there is nothing to report. The call with a null buffer looks at the
/// devices. The next call writes what that one saw, even if a device has come or gone in between.
///
/// Order: after `SetSettings`, so that the plug-in knows its settings, and before `Release`; the
/// caller may have called `IsAvailable` before. Also right after a factory that returned null.
///
/// Ownership: the buffer is the caller's.
/// Threads:   any, one caller at a time. Other operations may run meanwhile: it must not take a
///            device away from a draw.
/// Failure:   0. It throws nothing.
///
/// Every plug-in may export this name, so a call by name could reach another plug-in's function.
/// A plug-in therefore never makes one, and callers look the name up in the library they opened.
extern "C" std::int32_t GetRngReport(char* buffer);

#pragma GCC visibility pop

#endif

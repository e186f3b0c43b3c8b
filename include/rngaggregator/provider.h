#ifndef RNGAGGREGATOR_PROVIDER_H
#define RNGAGGREGATOR_PROVIDER_H

/// \file
/// The contract between the aggregator, its plug-ins and the hosts that draw from them.
///
/// A plug-in is a shared library `librng<kind>.so` that exports one function, its factory. The
/// aggregator opens the library, calls the factory, and treats the provider object so:
///
///     factory() -> SetSettings -> IsAvailable -> true:  listed ... Release -> library closed
///                                             -> false: Release -> library closed
///
/// Which file and which factory belong to a kind is fixed:
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
///                   possibly from several threads at once, also under the lock from other plug-ins
///
/// Code that runs under the lock may call the aggregator's queries. It must not call `Initialize`
/// or `ShutDown`: the lock is not recursive, and the call never returns.
///
/// Exceptions. The aggregator catches nothing: what a plug-in throws reaches the host, after the
/// aggregator may have closed the plug-in's library. So throw nothing, or at most the standard
/// library's own types; an exception whose class lives in the plug-in is gone with its library.

#include <cstddef>
#include <cstdint>

/// Size in bytes, terminator included, of a provider name or hardware identifier that can be stored
/// or reported as the default: at most 17 characters. `GetName` may report a longer name, and
/// `GetRng` finds it, but it can never be the default.
constexpr std::size_t kRngNameSize = 18;

/// Capability bits, as `IRngProvider::GetFlags` returns them and `GetAvailableRng` takes them as
/// its mask. The aggregator itself gives them no meaning. (The mask of `GetDefaultRng` has bits of
/// its own, the `kDefaultFallback` constants of aggregator.h.)
constexpr std::uint32_t kRngCapabilityHardware = 0x01;         ///< the source is a hardware device
constexpr std::uint32_t kRngCapabilityNeedsUser = 0x02;        ///< the user takes part in a draw
constexpr std::uint32_t kRngCapabilityOperatingSystem = 0x04;  ///< the system's own generator
constexpr std::uint32_t kRngCapabilityPrerecorded = 0x08;      ///< reads data recorded beforehand
constexpr std::uint32_t kRngCapabilityMayBlock = 0x10;         ///< a draw may wait for long

/// The settings that a host hands to `Initialize` and the aggregator to every provider. A host
/// takes the built-in one from `GetDefaultSettings` or implements its own.
///
/// Strings: a string that a Get operation returns is NUL-terminated, owned by the settings object
/// and valid at least until the next call of the same operation on the same object; a call of one
/// Get operation leaves the result of the others valid. Null means that nothing is configured.
///
/// Ownership: nobody destroys a settings object through this interface. Whoever made it keeps it
/// alive while the aggregator is started with it, and for `SetDefaultRng` also after that.
///
/// Threads: the queries call it from the host's threads, providers from wherever they like. The
/// built-in object does not support concurrent calls of one and the same operation.
class IRngSettings {
 public:
  /// Slot 0. The configured kind of generator, for example "unixdev", or null. Callers treat "" as
  /// null. The built-in object reads the file afresh at each call.
  virtual const char* GetType() = 0;

  /// Slot 1. Stores the kind. `type` is read during the call only. The built-in object stores an
  /// empty value for a null `type`, and creates the directories above its file when they are
  /// missing. Returns true when the value was stored, as far as the object can tell: the built-in
  /// one does not notice a full disk.
  virtual bool SetType(const char* type) = 0;

  /// Slot 2. The configured device of that kind, or null. Callers treat "" as null.
  virtual const char* GetHardwareId() = 0;

  /// Slot 3. Stores the device. `hardwareId` is read during the call only; null stores none. The
  /// built-in object creates no directories here: store the type first. Returns true when stored.
  virtual bool SetHardwareId(const char* hardwareId) = 0;

  /// Slot 4. The full path of the data file of the kind "dsdr". The built-in object computes it at
  /// the first call and keeps it for its life; it never opens the file. It is never null there.
  virtual const char* GetDsdrFilePath() = 0;

 protected:
  ~IRngSettings() = default;
};

/// One generator, implemented by a plug-in, used by the aggregator and by hosts.
///
/// Ownership: the plug-in makes it and ends it in `Release`. The aggregator alone decides when that
/// is called; a host only borrows the pointer, until the final `ShutDown`.
///
/// Text operations (`GetName`, `GetDescription`, `GetHardwareId`) share one protocol of two calls:
/// with a null `buffer` they return the size in bytes that the text needs, terminator included, or
/// 0 when there is none; then the caller passes a zero-filled buffer of exactly that size, the
/// operation writes the NUL-terminated text into it and returns the same size. A size that differs
/// from the first means that the text is not to be used. A negative size is outside the contract.
class IRngProvider {
 public:
  /// Slot 0 [any thread]. The provider name by which `GetRng` finds it, for example "unixdev".
  virtual std::int32_t GetName(char* buffer) = 0;

  /// Slot 1 [any thread]. A line of text for people, UTF-8, without line breaks.
  virtual std::int32_t GetDescription(char* buffer) = 0;

  /// Slot 2 [any thread]. The identifier of the device in use, at most 17 characters; 0 when the
  /// kind knows no devices or none is in use.
  virtual std::int32_t GetHardwareId(char* buffer) = 0;

  /// Slot 3 [any thread]. Chooses the device for the following draws; null or "" takes any.
  /// `hardwareId` is read during the call only. Returns false when there is no such device; the
  /// earlier choice stays.
  virtual bool SelectDevice(const char* hardwareId) = 0;

  /// Slot 4 [any thread]. Fills `buffer` with `size` random bytes. Returns true when the whole
  /// buffer is random, false when the draw failed or was cancelled, and the whole buffer is then
  /// zero. A size of 0 succeeds and touches nothing; only then may `buffer` be null.
  virtual bool Generate(void* buffer, std::size_t size) = 0;

  /// Slot 5 [start-up, any thread]. True when the provider is usable with the settings it was given.
  /// The aggregator asks once, after `SetSettings`, and releases a provider that answers false.
  virtual bool IsAvailable() = 0;

  /// Slot 6 [any thread]. True when the source passed its health test, made now.
  virtual bool SelfTest() = 0;

  /// Slot 7 [any thread]. Ends every `Generate` of this provider that waits for a user or a device;
  /// those return false. Without one it does nothing, nor does it touch later draws.
  virtual void Cancel() = 0;

  /// Slot 8 [any thread]. The capability bits (`kRngCapability` constants). The aggregator asks
  /// afresh each time; a provider without any bit is never listed by `GetAvailableRng`.
  virtual std::uint32_t GetFlags() = 0;

  /// Slot 9 [start-up]. The settings of the host, possibly null. Called exactly once, before any
  /// other operation. The provider may keep the pointer until `Release`.
  virtual void SetSettings(IRngSettings* settings) = 0;

  /// Slot 10 [start-up, shut-down]. Ends the use of the object. The library is closed right after,
  /// so nothing may be left running that needs its code: no thread, no handler, no callback. Called
  /// exactly once, but not at all when `SetSettings` or `IsAvailable` threw, or when the host
  /// unloads the aggregator without its final `ShutDown`.
  virtual void Release() = 0;

 protected:
  ~IRngProvider() = default;
};

/// The factory that a plug-in exports, unmangled, under the name that belongs to its kind
/// [start-up].
///
/// Returns the provider, or null when the library cannot provide one; the library is then closed.
/// The aggregator calls it once for each loading of the library. After a full stop and a new start
/// it is called again and must produce a usable object again, the same or a new one.
extern "C" {
typedef IRngProvider* (*RngFactory)();
}

#endif

#ifndef RNGAGGREGATOR_SESSION_H
#define RNGAGGREGATOR_SESSION_H

/// \file
/// The library for C++17 hosts: it is started and stopped by scope, generators are values, and failures are exceptions.
///
///     rng::Session session;
///     const auto key = session.Default().Bytes<32>();
///
/// Header only; link the library as for aggregator.h. generator.h and engine.h declare what a session is used for.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cxxabi.h>
#include <exception>
#include <link.h>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>

#include <rngaggregator/aggregator.h>
#include <rngaggregator/engine.h>
#include <rngaggregator/generator.h>

namespace rng {
namespace detail {

// Identifies the loaded file that contains an address; null when none does.
inline const void* FileAt(const void* place) {
  struct Search {
    ElfW(Addr) place;
    const void* file;
  } search = {reinterpret_cast<ElfW(Addr)>(place), nullptr};
  const auto look = [](dl_phdr_info* info, std::size_t, void* data) {
    Search& wanted = *static_cast<Search*>(data);
    for (std::size_t i = 0; i < info->dlpi_phnum; ++i) {
      const ElfW(Phdr)& segment = info->dlpi_phdr[i];
      const bool isInside = wanted.place - info->dlpi_addr - segment.p_vaddr < segment.p_memsz;
      if (segment.p_type == PT_LOAD && isInside) wanted.file = info->dlpi_phdr;
    }
    return wanted.file ? 1 : 0;
  };
  ::dl_iterate_phdr(look, &search);
  return search.file;
}

// Whether an exception of this type is the library's own boost::lock_error, after which the start was not counted. A
// plug-in that cannot take a lock of its own may throw the same class, but from its own file.
inline bool IsLockRefused(const std::type_info& type) {
  return std::strstr(type.name(), "lock_error") && FileAt(&type) == FileAt(GetDefaultSettings());
}

// One counted start of the library, with the health checks of its generators.
class StartedLibrary {
 public:
  // Outlives this object, so that `Session::Stop` can report how the stop went.
  struct StopResult {
    std::atomic<bool> isStopped{false};
    bool hasFailed = false;
    std::string failure;
  };

  explicit StartedLibrary(IRngSettings* settings) {
    Start(settings);
    if (IsInitialized()) return;
    Stop();
    throw Error(
        ErrorCode::kStartFailed,
        "The library was not started, because this process has stopped it more often than it "
        "has started it. Call ShutDown exactly once for each Initialize.");
  }
  StartedLibrary(const StartedLibrary&) = delete;
  StartedLibrary& operator=(const StartedLibrary&) = delete;
  ~StartedLibrary() {
    while (const Source* const first = sources) {
      sources = first->next;
      delete first;
    }
    Stop();
    stopResult->isStopped = true;
  }

  const std::shared_ptr<StopResult>& GetStopResult() const { return stopResult; }

  // One object for each provider, added at the first call. Takes no lock: a forked child could find it held.
  CheckedRng& ChecksOf(IRngProvider* provider) {
    Source* known = sources;
    std::unique_ptr<Source> added;
    while (true) {
      for (Source* source = known; source; source = source->next) {
        if (source->provider == provider) return source->rng;
      }
      if (!added) added = std::make_unique<Source>(provider);
      added->next = known;
      if (sources.compare_exchange_weak(known, added.get())) return added.release()->rng;
    }
  }

 private:
  struct Source {
    explicit Source(IRngProvider* checked) : provider(checked), rng(checked) {}
    IRngProvider* const provider;
    CheckedRng rng;
    Source* next = nullptr;
  };

  void Start(IRngSettings* settings) {
    try {
      Initialize(settings);
    } catch (...) {
      const std::exception_ptr thrown = std::current_exception();
      if (!thrown) {  // the thread is being cancelled
        Stop();
        throw;
      }
      ThrowStartFailed(thrown);
    }
  }

  // The library has closed the plug-in that threw. If that has unloaded the class of the exception, the exception can
  // be neither examined nor destroyed.
  [[noreturn]] void ThrowStartFailed(const std::exception_ptr& thrown) {
    const std::type_info* const type = abi::__cxa_current_exception_type();
    std::string text = ". ";
    bool isCounted = true;
    if (FileAt(type)) {
      text = CaughtText();
      isCounted = !IsLockRefused(*type);
    } else {
      [[maybe_unused]] auto* const neverDeleted = new std::exception_ptr(thrown);
    }
    if (isCounted) Stop();
    throw Error(ErrorCode::kStartFailed,
                "The library could not be started: a plug-in or the system failed" + text +
                    "Run \"rngctl doctor\" to find out which.");
  }

  // An exception comes from a plug-in that is still loaded, so it can be examined.
  void Stop() noexcept {
    try {
      ShutDown();
    } catch (...) {
      stopResult->hasFailed = true;
      stopResult->failure = CaughtText();
    }
  }

  std::shared_ptr<StopResult> stopResult = std::make_shared<StopResult>();
  std::atomic<Source*> sources{nullptr};
};

}  // namespace detail

/// A start of the library, as a value. Copies share it, and so do the generators and engines that come from it. When
/// the last of them is destroyed, the library stops, unless other code in the process has started it, too.
///
/// Threads:   any thread may use its own copy, or call `Find` on a shared object. Call `Default` from one thread at a
///            time, unless the host's own settings allow more. Do not assign to an object that another thread uses, nor
///            call `Stop` on it.
/// Fork:      the child process has its own copy, and may find, draw and stop.
/// Exit:      destroy every session before `main` returns, or give it static storage duration: it is then destroyed
///            before the plug-ins that it has loaded. A static `std::optional` or pointer that is set later is
///            destroyed after them, so reset it before `main` returns.
class Session {
 public:
  /// Starts the library. If other code in this process has started it before, uses that start, with its settings.
  ///
  /// Ownership: `settings` remains the caller's, as with `Initialize`; null means that nothing is configured.
  /// Failure:   throws `kStartFailed` when a plug-in throws. The library has then not tried the plug-ins after it, so
  ///            the start is undone. "rngctl doctor" names the plug-in.
  explicit Session(IRngSettings* settings = GetDefaultSettings())
      : library(std::make_shared<detail::StartedLibrary>(settings)) {}
  Session(const Session&) = default;             ///< shares the start; moving does the same
  Session& operator=(const Session&) = default;  ///< likewise, and gives up its own start
  /// Ignores what a plug-in throws when it is stopped; call `Stop` to learn of it. If a plug-in then ends the thread,
  /// or the thread is cancelled, the process terminates.
  ~Session() = default;

  /// Returns the configured default generator, with its device selected. If no default is configured, returns the first
  /// interactive kind that `mask` (`kDefaultFallback` bits) accepts.
  ///
  /// Failure: throws `kNoDefault` when there is none, `kNoSuchGenerator` when the default is not loaded (no other is
  ///          used instead), and `kDeviceMissing` when it refuses the configured device.
  Generator Default(std::uint32_t mask = 0) const {
    DefaultRngInfo choice = {};
    const auto read = [&] { return GetDefaultRng(&choice, mask) == 1; };
    const auto problem = [] { return std::string("The default generator cannot be determined"); };
    const auto advice = [] { return std::string("Run \"rngctl doctor\" to find out why."); };
    Library();
    if (detail::Ask(ErrorCode::kNoDefault, read, problem, advice))
      return Find(choice.type, choice.hardwareId);
    throw Error(
        ErrorCode::kNoDefault,
        "No default generator is configured for this user, or the settings cannot be read. "
        "Run \"rngctl default set KIND\" to choose one, or \"rngctl default\" to see what is "
        "configured.");
  }

  /// Returns the generator of that name, which must not be empty. Selects `device`, unless that is empty.
  ///
  /// A generator has one selected device. It applies to all draws that begin later, including those of other objects
  /// and of other code in the process.
  ///
  /// Failure: throws `kNoSuchGenerator` when it is not loaded, and `kDeviceMissing` when it refuses the device.
  Generator Find(const std::string& name, const std::string& device = std::string()) const {
    detail::StartedLibrary& started = Library();
    if (name.empty()) {
      throw Error(ErrorCode::kNoSuchGenerator,
                  "The name of the generator is empty. Run \"rngctl list\" to see the names.");
    }
    const std::string quoted = "The generator " + detail::Quoted(name);
    const auto problem = [&] { return quoted + " cannot be found"; };
    const auto advice = [&] { return detail::Doctor(name); };
    const auto find = [&] { return HasNul(name) ? nullptr : GetRng(name.c_str()); };
    IRngProvider* const provider = detail::Ask(ErrorCode::kNoSuchGenerator, find, problem, advice);
    if (!provider) throw Error(ErrorCode::kNoSuchGenerator, quoted + " is not loaded. " + advice());
    CheckedRng& rng = started.ChecksOf(provider);
    if (!device.empty()) Select(rng, quoted, device);
    return Generator(std::shared_ptr<CheckedRng>(library, &rng), name);
  }

  /// Gives up the start now instead of in the destructor. Returns true if that ended it, false if a copy, generator or
  /// engine still shares it. Later calls on this object throw `kStopped`.
  ///
  /// Failure: throws `kStopFailed` when a plug-in threw, or the lock was refused. That plug-in and those after it were
  ///          not released. Do not start the library again in this process: the next stop would fail, too.
  bool Stop() {
    Library();
    const std::shared_ptr<detail::StartedLibrary::StopResult> result = library->GetStopResult();
    library.reset();
    if (!result->isStopped || !result->hasFailed) return result->isStopped;
    throw Error(ErrorCode::kStopFailed,
                "The library could not be stopped: a plug-in or the system failed" +
                    result->failure + "Run \"rngctl doctor\" to find out which.");
  }

 private:
  detail::StartedLibrary& Library() const {
    if (library) return *library;
    throw Error(ErrorCode::kStopped, "This session has been stopped. Make another rng::Session.");
  }

  // The library takes C strings, so it would look for another name or device.
  static bool HasNul(const std::string& text) { return text.find('\0') != std::string::npos; }

  static void Select(CheckedRng& rng, const std::string& generator, const std::string& device) {
    const auto select = [&] { return !HasNul(device) && rng.SelectDevice(device.c_str()); };
    const auto problem = [&] {
      return generator + " refuses the device " + detail::Quoted(device);
    };
    const auto advice = [] { return std::string("Run \"rngctl list\" to see the devices."); };
    if (detail::Ask(ErrorCode::kDeviceMissing, select, problem, advice)) return;
    throw Error(ErrorCode::kDeviceMissing, problem() + ". " + advice());
  }

  std::shared_ptr<detail::StartedLibrary> library;
};

}  // namespace rng

#endif

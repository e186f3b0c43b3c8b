#ifndef RNGAGGREGATOR_SESSION_H
#define RNGAGGREGATOR_SESSION_H

/// \file
/// The library for C++17 hosts: starts and stops by scope, values instead of pointers, exceptions instead of results.
///
///     rng::Session session;
///     const auto key = session.Default().Bytes<32>();
///
/// Header only; link the library as for aggregator.h. generator.h and engine.h have what a session gives.

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

// Whether the exception that is being handled is the library's own boost::lock_error, after which nothing was counted.
// A plug-in that fails to take a lock of its own may throw the same class, from its own file.
inline bool IsLockRefused(const std::type_info& type) {
  return std::strstr(type.name(), "lock_error") && FileAt(&type) == FileAt(GetDefaultSettings());
}

// One counted start of the library, and the checks of what was drawn since.
class StartedLibrary {
 public:
  // Outlives the library, so that the one who let go of it learns how it ended.
  struct Ending {
    std::atomic<bool> isOver{false};
    bool isGood = true;
    std::string failure;
  };

  explicit StartedLibrary(IRngSettings* settings) {
    Start(settings);
    if (IsInitialized()) return;
    Stop();
    throw Error(ErrorCode::kStartFailed,
                "The library was not started, because this process has stopped it more often than "
                "started it. Call ShutDown exactly once for each Initialize.");
  }
  StartedLibrary(const StartedLibrary&) = delete;
  StartedLibrary& operator=(const StartedLibrary&) = delete;
  ~StartedLibrary() {
    while (const Source* const first = sources) {
      sources = first->next;
      delete first;
    }
    Stop();
    ending->isOver = true;
  }

  const std::shared_ptr<Ending>& GetEnding() const { return ending; }

  // One for each provider. Without a lock, which a forked copy of the process could find taken.
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

  // The library has closed the plug-in that threw. If the class of the exception went with it, the exception can be
  // neither looked at nor destroyed.
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

  // Exceptions come from plug-ins that are still loaded.
  void Stop() noexcept {
    try {
      ShutDown();
    } catch (...) {
      ending->isGood = false;
      ending->failure = CaughtText();
    }
  }

  std::shared_ptr<Ending> ending = std::make_shared<Ending>();
  std::atomic<Source*> sources{nullptr};
};

}  // namespace detail

/// One start of the library. A value: copies share the start, and so do the generators and engines that come from it.
/// The last of them stops the library, if nobody else in the process has started it.
///
/// Threads:   copies may be used in several threads, and `Find` of one object, too; `Default` as the settings allow:
///            with the built-in ones, from one thread at a time. Assigning to an object that another thread uses is not
///            safe, nor is `Stop`.
/// Fork:      the child has its own copy: it may find, draw and stop.
/// Exit:      let a session end before `main` returns. One with static storage duration stops in time, too, because
///            it is destroyed before the plug-ins that it has loaded. A static `std::optional` or pointer that is filled
///            later does not: the plug-ins are newer than it. Reset it before `main` returns.
class Session {
 public:
  /// Starts the library, or shares the start of another user in this process, who has chosen the settings.
  ///
  /// Ownership: `settings` remains the caller's, as with `Initialize`; null means that nothing is configured.
  /// Failure:   throws `kStartFailed` when a plug-in throws. The start is then undone: which generators are missing is
  ///            not known, so nothing is kept of it. "rngctl doctor" names the plug-in.
  explicit Session(IRngSettings* settings = GetDefaultSettings())
      : library(std::make_shared<detail::StartedLibrary>(settings)) {}
  Session(const Session&) = default;             ///< shares the start; moving does the same
  Session& operator=(const Session&) = default;  ///< likewise, and lets go of its own
  /// What a plug-in throws at the stop is lost; `Stop` reports it. A plug-in that ends the thread then, or a
  /// cancellation, ends the process.
  ~Session() = default;

  /// The configured default with its device. Without one, `mask` (of `kDefaultFallback` bits) says which kinds that ask
  /// the user are acceptable.
  ///
  /// Failure: throws `kNoDefault`; `kNoSuchGenerator` when the generator is not loaded, and never uses another instead;
  ///          `kDeviceMissing` when the configured device is refused.
  Generator Default(std::uint32_t mask = 0) const {
    DefaultRngInfo choice = {};
    const auto read = [&] { return GetDefaultRng(&choice, mask) == 1; };
    const auto problem = [] { return std::string("The default generator cannot be determined"); };
    const auto advice = [] { return std::string("Run \"rngctl doctor\" to find out why."); };
    Library();
    if (detail::Ask(ErrorCode::kNoDefault, read, problem, advice))
      return Find(choice.type, choice.hardwareId);
    throw Error(ErrorCode::kNoDefault,
                "No default generator is configured for this user. Run \"rngctl default set KIND\" "
                "to choose one, or \"rngctl default\" to see what is configured.");
  }

  /// The generator of that name, which must not be empty. With a `device`, selects it; without, leaves the selection.
  ///
  /// A generator has one selection. It applies to all draws that begin later, also those of other values and of other
  /// users in the process.
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

  /// Lets go of the start now instead of in the destructor. Returns true when that has stopped the library for this
  /// session, false when a copy, generator or engine still shares the start. Other calls of this object then throw
  /// `kStopped`.
  ///
  /// Failure: throws `kStopFailed` when a plug-in threw, or the lock was refused. That plug-in and those after it were
  ///          not released. Do not start again in this process: the next stop would fail, too.
  bool Stop() {
    Library();
    const std::shared_ptr<detail::StartedLibrary::Ending> ending = library->GetEnding();
    library.reset();
    if (!ending->isOver || ending->isGood) return ending->isOver;
    throw Error(ErrorCode::kStopFailed,
                "The library could not be stopped: a plug-in or the system failed" +
                    ending->failure + "Run \"rngctl doctor\" to find out which.");
  }

 private:
  detail::StartedLibrary& Library() const {
    if (library) return *library;
    throw Error(ErrorCode::kStopped, "This session has been stopped. Make another rng::Session.");
  }

  // The library's texts end there: it would find another name or device.
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

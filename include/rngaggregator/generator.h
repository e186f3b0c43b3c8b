#ifndef RNGAGGREGATOR_GENERATOR_H
#define RNGAGGREGATOR_GENERATOR_H

/// \file
/// A generator as a C++17 value: draws that throw when they fail. session.h shows how a host gets one.

#if __cplusplus < 201703L
#error "rngaggregator/generator.h needs C++17. Compile with -std=c++17 or later."
#endif
#ifndef __cpp_exceptions
#error "rngaggregator/generator.h needs exceptions. Compile without -fno-exceptions."
#endif

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cxxabi.h>
#include <exception>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include <rngaggregator/checked_rng.h>
#include <rngaggregator/provider.h>

namespace rng {

/// What went wrong.
enum class ErrorCode {
  kStartFailed,      ///< the library could not be started
  kStopFailed,       ///< the library could not be stopped
  kStopped,          ///< `Session::Stop` has been called on this session
  kNoSuchGenerator,  ///< no generator of that name is loaded
  kNoDefault,        ///< no default is configured, or its settings could not be read
  kDeviceMissing,    ///< the generator refused the device
  kDrawFailed,       ///< a draw or another operation of the generator failed or was cancelled
  kAlarm,            ///< the drawn bytes are evidently not random
  kNeedsUser         ///< the generator would ask the user, which the caller has not allowed
};

/// The exception that the classes of this namespace throw. `what()` says what is wrong and then what to do, in
/// printable ASCII. The object holds copies of what plug-ins report, so it stays valid after the library has stopped.
class [[gnu::visibility("default")]] Error : public std::runtime_error {
 public:
  /// For the classes of this namespace.
  Error(ErrorCode reason, const std::string& text) : std::runtime_error(text), kind(reason) {}

  /// What went wrong.
  ErrorCode code() const noexcept { return kind; }

 private:
  ErrorCode kind;
};

// Not part of the interface.
namespace detail {

// A plug-in may report anything: control characters, escape sequences, a megabyte of text.
inline std::string Printable(const char* text) {
  constexpr std::size_t kLongest = 200;
  std::string result(text, ::strnlen(text, kLongest));
  for (char& character : result) {
    if (character < ' ' || character > '~') character = '?';
  }
  return result;
}

inline std::string Quoted(const std::string& text) { return '"' + Printable(text.c_str()) + '"'; }

inline std::string Doctor(const std::string& name) {
  return "Run \"rngctl doctor " + Printable(name.c_str()) + "\" to find out why.";
}

// Ends a sentence with the text of the exception that is being handled.
inline std::string CaughtText() {
  try {
    throw;
  } catch (const std::exception& error) {
    const char* const text = error.what();
    if (text && *text) return ": " + Printable(text) + ". ";
  } catch (...) {  // no text
  }
  return ". ";
}

// Makes a call that runs code of plug-ins. An exception of theirs is destroyed while they are loaded, and becomes an
// Error: the sentence `problem`, the text of the exception, and the sentence `advice`.
template <typename Call, typename Problem, typename Advice>
auto Ask(ErrorCode code, const Call& call, const Problem& problem, const Advice& advice) {
  try {
    return call();
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (...) {
    throw Error(code, problem() + CaughtText() + advice());
  }
}

// Not bool, enumerations or structures, which have bit patterns that are not valid values.
template <typename Element>
constexpr bool kCanBeFilled = (std::is_integral_v<Element> && !std::is_same_v<Element, bool> &&
                               !std::is_const_v<Element> && !std::is_volatile_v<Element>) ||
                              std::is_same_v<Element, std::byte>;

}  // namespace detail

/// One generator, as a value. Copies draw from the same generator and share its checks.
///
/// Every draw is checked as checked_rng.h describes. The checks continue from draw to draw. After an alarm, all draws
/// from that generator fail in this session; a new session begins new checks.
///
/// Ownership: keeps the session alive, and with it the plug-in.
/// Threads:   any, also concurrently if the plug-in supports that. Do not assign to an object that another thread uses.
/// Failure:   throws `Error`, also in place of what a plug-in throws. Only the unwinding of `pthread_cancel` and
///            `pthread_exit` passes through.
class Generator {
 public:
  /// Draws from any provider, such as one of the host's own. `name` appears in the texts of errors. `provider` must not
  /// be null. Its deleter must do all the cleanup, because the last copy of this object may be its last owner.
  Generator(std::shared_ptr<CheckedRng> provider, std::string name)
      : rng(std::move(provider)), kind(std::move(name)) {}
  Generator(const Generator&) = default;  ///< moving does the same: the source remains usable
  Generator& operator=(const Generator&) = default;  ///< likewise
  ~Generator() = default;

  /// Fills a C array, `std::array`, `std::vector`, `std::span` or other contiguous range of integers or `std::byte`
  /// with random bytes. When it throws, the range holds zeros.
  template <typename Range>
  void Fill(Range&& range) const {
    FillElements(std::data(range), std::size(range));
  }

  /// Fills `size` bytes: `buffer` points to characters or `std::byte`. With a `size` of 0 it may be null.
  template <typename Byte>
  void Fill(Byte* buffer, std::size_t size) const {
    static_assert(sizeof(Byte) == 1,
                  "Fill takes a pointer to bytes and their number. Pass anything else as a range");
    FillElements(buffer, size);
  }

  /// Returns `size` random bytes. When it throws, it has wiped those that were drawn.
  template <std::size_t size>
  std::array<std::uint8_t, size> Bytes() const {
    std::array<std::uint8_t, size> bytes;
    Fill(bytes);
    return bytes;
  }

  /// Ends this generator's waiting draws in all threads; they throw `kDrawFailed`. Later draws are not affected.
  void Cancel() const {
    Call([this] { rng->Cancel(); });
  }

  /// Whether a draw would ask the user. That may depend on the device and the settings.
  bool NeedsUser() const {
    return Call([this] { return (rng->GetFlags() & kRngCapabilityNeedsUser) != 0; });
  }

  /// The name by which the generator was found.
  const std::string& Name() const { return kind; }

  /// The device in use, or "" if there is none or the generator does not report one.
  std::string Device() const {
    return Call([this] {
      const std::int32_t size = rng->GetHardwareId(nullptr);
      if (size <= 0) return std::string();
      std::string text(static_cast<std::size_t>(size), '\0');
      if (rng->GetHardwareId(text.data()) != size) return std::string();
      text.resize(std::strlen(text.c_str()));
      return text;
    });
  }

  /// The provider, for its other operations. Draws through it are checked, too. What the plug-in throws passes through.
  /// Ownership: borrowed from this object. `SetSettings` and `Release` do nothing.
  CheckedRng& Provider() const { return *rng; }

 private:
  template <typename Element>
  void FillElements(Element* first, std::size_t count) const {
    static_assert(
        detail::kCanBeFilled<Element>,
        "Fill needs elements that are integers other than bool, or std::byte, and not const");
    Draw(first, count * sizeof(Element));
  }

  template <typename Operation>
  auto Call(const Operation& operation) const -> decltype(operation()) {
    return detail::Ask(
        ErrorCode::kDrawFailed, operation,
        [this] { return "The generator " + detail::Quoted(kind) + " failed"; },
        [this] { return detail::Doctor(kind); });
  }

  // The checks leave zeros where a draw fails, throws or is cancelled.
  void Draw(void* buffer, std::size_t size) const {
    if (!Call([&] { return rng->Generate(buffer, size); })) ThrowFailure();
  }

  [[noreturn]] void ThrowFailure() const {
    const std::string name = detail::Quoted(kind);
    if (rng->Alarm() == RngHealthAlarm::kNone) {
      throw Error(ErrorCode::kDrawFailed, "A draw from the generator " + name +
                                              " failed or was cancelled. " + detail::Doctor(kind));
    }
    throw Error(ErrorCode::kAlarm,
                "The generator " + name +
                    " returned bytes that are evidently not random. Stop using it, and replace "
                    "everything that was made from its bytes.");
  }

  std::shared_ptr<CheckedRng> rng;
  std::string kind;
};

}  // namespace rng

#endif

#ifndef RNGAGGREGATOR_ENGINE_H
#define RNGAGGREGATOR_ENGINE_H

/// \file
/// A generator as an engine of C++17 `<random>`, for `std::shuffle` and the distributions.
///
///     rng::Engine engine(session.Default());
///     std::shuffle(cards.begin(), cards.end(), engine);

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <sys/mman.h>

#include <rngaggregator/generator.h>

namespace rng {

/// Whether an engine may use a generator that asks the user. The user is then asked once for every 511 numbers.
enum class Interaction { kRefused, kAllowed };

/// Returns uniform numbers of 64 bits. Satisfies `std::uniform_random_bit_generator`. It draws numbers in batches: 8 at
/// first, then twice as many each time, up to 511. So few numbers of a slow device are drawn in vain.
///
/// The buffered numbers have a page of their own, and each is wiped when it is returned. The page is not part of core
/// files. After a fork the kernel zeroes it in the child process, so the two processes get different numbers. If the
/// kernel cannot do that (before Linux 4.14), nothing is buffered, and each number is a draw. The page may be swapped
/// out, because the limit on locked memory is the host's to use: for keys, use `Generator::Fill`.
///
/// A copy uses the same generator and starts with an empty buffer. Moving copies, so the source remains usable.
///
/// Ownership: keeps the generator's session alive.
/// Threads:   one at a time; give each thread its own engine. Do not use one in a signal handler, nor in a child
///            process that shares its parent's memory (`vfork`, `CLONE_VM`).
/// Failure:   throws `Error`. That may leave the elements of an algorithm such as `std::shuffle` partly processed.
class Engine {
 public:
  using result_type = std::uint64_t;  ///< the name that the C++ library requires

  /// Draws nothing yet. Throws `kNeedsUser` when the generator asks the user and `interaction` does not allow that.
  explicit Engine(const Generator& generator, Interaction interaction = Interaction::kRefused)
      : source(generator), asksUser(source.NeedsUser()) {
    if (!asksUser || interaction == Interaction::kAllowed) return;
    throw Error(ErrorCode::kNeedsUser, "The generator " + detail::Quoted(source.Name()) +
                                           " would ask the user for an engine's numbers. Choose "
                                           "another, or pass Interaction::kAllowed.");
  }
  /// Copies the generator, not the buffered numbers.
  Engine(const Engine& other) : source(other.source), asksUser(other.asksUser) {}
  /// Wipes the buffered numbers, which come from the old generator.
  Engine& operator=(const Engine& other) {
    if (this == &other) return *this;
    source = other.source;
    asksUser = other.asksUser;
    batch = kFirstBatch;
    if (store) ::explicit_bzero(store.get(), sizeof *store);
    return *this;
  }
  ~Engine() = default;

  static constexpr result_type min() { return 0; }           ///< the smallest number
  static constexpr result_type max() { return UINT64_MAX; }  ///< the largest number

  /// Returns the next number. Draws more when the buffer is empty.
  result_type operator()() {
    if (!store) return DrawOne();
    if (store->count == 0) Refill();
    result_type& next = store->numbers[--store->count];
    const result_type number = next;
    next = 0;
    return number;
  }

 private:
  static constexpr std::size_t kPage = 4096;
  static constexpr std::size_t kFirstBatch = 8;

  // A whole page, so that the kernel can zero it. After a fork, `count` is therefore 0 in the child.
  struct Store {
    static constexpr std::size_t kMost = kPage / sizeof(result_type) - 1;
    std::uint64_t count;
    result_type numbers[kMost];
  };
  static_assert(sizeof(Store) == kPage, "the kernel zeroes whole pages");

  struct Unmap {
    void operator()(Store* page) const {
      ::explicit_bzero(page, sizeof *page);
      ::munmap(page, kPage);
    }
  };
  using OwnedStore = std::unique_ptr<Store, Unmap>;

  // Returns null if the kernel cannot zero the page after a fork.
  static OwnedStore MakeStore() {
    void* const page =
        ::mmap(nullptr, kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) return nullptr;
    OwnedStore result(static_cast<Store*>(page));
    if (::madvise(page, kPage, MADV_WIPEONFORK) != 0) return nullptr;
    ::madvise(page, kPage, MADV_DONTDUMP);
    return result;
  }

  // The count is set last, so that it stays 0 if the draw throws.
  void Refill() {
    const std::size_t count = asksUser ? Store::kMost : batch;
    source.Fill(reinterpret_cast<unsigned char*>(store->numbers), count * sizeof(result_type));
    store->count = count;
    batch = std::min(2 * count, Store::kMost);
  }

  result_type DrawOne() const {
    result_type number[1];
    source.Fill(number);
    return number[0];
  }

  Generator source;
  bool asksUser;
  std::size_t batch = kFirstBatch;
  OwnedStore store = MakeStore();
};

}  // namespace rng

#endif

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
#include <utility>

#include <rngaggregator/generator.h>

namespace rng {

/// Whether an engine may be made from a generator that asks the user. It then asks once for every 511 numbers.
enum class Interaction { kRefused, kAllowed };

/// Uniform numbers of 64 bits, drawn in advance: 8 at first, then twice as many each time, up to 511. So a slow device
/// is not asked for many numbers that nobody needs. Satisfies `std::uniform_random_bit_generator`.
///
/// The numbers in advance are in memory of their own, and each is wiped there when it is returned. That memory is not
/// part of core files. After a fork the kernel empties it in the child, so the two processes get different numbers.
/// It is not locked into memory, because the limit of locked memory belongs to the host: for keys, use
/// `Generator::Fill`. If the kernel cannot do that (before Linux 4.14), each number is drawn alone.
///
/// A copy has the same generator and no numbers in advance. Moving is copying, so the source remains usable.
///
/// Ownership: keeps the generator's session alive.
/// Threads:   one at a time; give each thread its own. Do not use it in a signal handler, nor in a child that shares
///            the memory of its parent (`vfork`, `CLONE_VM`).
/// Failure:   throws `Error`. An algorithm that is interrupted leaves its elements half done.
class Engine {
 public:
  using result_type = std::uint64_t;  ///< as the C++ library calls it

  /// Throws `kNeedsUser` when the generator asks the user and that is not allowed. Draws nothing yet.
  explicit Engine(Generator generator, Interaction interaction = Interaction::kRefused)
      : source(std::move(generator)), asksUser(source.NeedsUser()) {
    if (!asksUser || interaction == Interaction::kAllowed) return;
    throw Error(ErrorCode::kNeedsUser, "The generator " + detail::Quoted(source.Name()) +
                                           " would ask the user for an engine's numbers. Choose "
                                           "another, or pass Interaction::kAllowed.");
  }
  /// Without the numbers in advance.
  Engine(const Engine& other) : source(other.source), asksUser(other.asksUser) {}
  /// The numbers in advance are wiped: they are of the old generator.
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

  /// Returns the next number, and draws more when there is none in advance.
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

  // A page, so that the kernel can empty it. After a fork `count` is 0 in the child.
  struct Store {
    static constexpr std::size_t kMost = kPage / sizeof(result_type) - 1;
    std::uint64_t count;
    result_type numbers[kMost];
  };
  static_assert(sizeof(Store) == kPage, "the kernel empties whole pages");

  struct Unmap {
    void operator()(Store* page) const {
      ::explicit_bzero(page, sizeof *page);
      ::munmap(page, kPage);
    }
  };
  using OwnedStore = std::unique_ptr<Store, Unmap>;

  // Null when the kernel does not empty it after a fork.
  static OwnedStore MakeStore() {
    void* const page =
        ::mmap(nullptr, kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) return nullptr;
    OwnedStore result(static_cast<Store*>(page));
    if (::madvise(page, kPage, MADV_WIPEONFORK) != 0) return nullptr;
    ::madvise(page, kPage, MADV_DONTDUMP);
    return result;
  }

  // The count is set last: if the draw throws, there are no numbers.
  void Refill() {
    const std::size_t count = asksUser ? Store::kMost : batch;
    source.Fill(store->numbers, count);
    store->count = count;
    batch = std::min(2 * count, Store::kMost);
  }

  result_type DrawOne() const {
    result_type number = 0;
    source.Fill(&number, 1);
    return number;
  }

  Generator source;
  bool asksUser;
  std::size_t batch = kFirstBatch;
  OwnedStore store = MakeStore();
};

}  // namespace rng

#endif

#ifndef PROVIDERS_DLL_LOADER_H
#define PROVIDERS_DLL_LOADER_H

namespace rngshared {
namespace smartwr {

/// Owns one handle of the dynamic loader and closes it exactly once, unless it is detached. The
/// result of closing is ignored. The reason why opening failed is neither reported nor kept.
///
/// The two ways of opening differ on purpose: the constructor makes the library's symbols available
/// to libraries loaded later (`RTLD_LAZY | RTLD_GLOBAL`), `Load` does not (`RTLD_LAZY`). The
/// start-up uses the constructor alone.
///
/// Threads: not locked; the start-up uses it under the aggregator's lock.
class DllLoader {
 public:
  DllLoader() = default;
  explicit DllLoader(const char* fileName);  ///< holds null when the library cannot be opened
  DllLoader(const DllLoader&) = delete;
  DllLoader& operator=(const DllLoader&) = delete;
  virtual ~DllLoader();

  /// Closes the library that is held, then opens `fileName`. Returns the new handle, null on
  /// failure; the loader then holds nothing.
  void* Load(const char* fileName);

  /// Closes the library that is held, if any.
  void Unload();

  /// Returns the handle, null when none is held. The loader still owns it.
  void* GetHandle() const { return handle; }

  /// Returns the handle and gives up its ownership: the caller must close it.
  void* Detach();

 private:
  void* handle = nullptr;
};

}  // namespace smartwr
}  // namespace rngshared

#endif

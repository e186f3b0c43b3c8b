#include "openssl/helper/chosen_generator.h"

#include <dlfcn.h>
#include <memory>
#include <stdexcept>
#include <vector>

#include <rngaggregator/combined_rng.h>
#include <rngaggregator/session.h>

namespace {

void RefuseIfItAsksTheUser(const std::string& name, std::uint32_t flags) {
  if (!IsInteractiveRng(name.c_str()) && !(flags & kRngCapabilityNeedsUser)) return;
  throw rng::Error(
      rng::ErrorCode::kNeedsUser,
      "The generator \"" + name +
          "\" asks the user, and a program that uses OpenSSL "
          "cannot wait for that. Choose another with \"rngctl default set\", or with \"kind\" "
          "in the provider's section of OpenSSL's configuration.");
}

// The name decides first, because such a kind may not be loaded here.
rng::Generator FindDefault(const rng::Session& session) {
  DefaultRngInfo configured = {};
  if (GetDefaultRng(&configured, 0)) RefuseIfItAsksTheUser(configured.type, 0);
  return session.Default();
}

rng::Generator FindKind(const rng::Session& session, const std::string& kind,
                        const std::string& device) {
  RefuseIfItAsksTheUser(kind, 0);
  return session.Find(kind, device);
}

ChosenGenerator ChooseOne(const rng::Session& session, const rng::Generator& generator) {
  RefuseIfItAsksTheUser(generator.Name(), generator.Provider().GetFlags());
  const std::string device = generator.Device();
  return {device.empty() ? generator.Name() : generator.Name() + ' ' + device,
          [session, generator](void* buffer, std::size_t size) {
            generator.Fill(static_cast<unsigned char*>(buffer), size);
          }};
}

// Reports why a combined draw failed: the source that raised an alarm, or else the first that could not be used.
[[noreturn]] void ThrowFailure(const std::vector<rng::SourceOutcome>& outcomes) {
  for (const rng::SourceOutcome& outcome : outcomes) {
    if (outcome.result == rng::SourceResult::kAlarm)
      throw rng::Error(rng::ErrorCode::kAlarm, rng::Explain(outcome));
  }
  for (const rng::SourceOutcome& outcome : outcomes) {
    const std::string reason = rng::Explain(outcome);
    if (!reason.empty()) throw rng::Error(rng::ErrorCode::kDrawFailed, reason);
  }
  throw rng::Error(rng::ErrorCode::kDrawFailed, "The draw failed: out of memory.");
}

std::vector<rng::CombinedSource> FindSources(const std::string& list) try {
  return rng::FindSources(list);
} catch (const std::invalid_argument& error) {
  throw std::invalid_argument(std::string(error.what()) +
                              " Fix: correct \"from\" in OpenSSL's configuration.");
}

ChosenGenerator ChooseSeveral(const rng::Session& session, const std::string& list) {
  const std::vector<rng::CombinedSource> sources = FindSources(list);
  for (const rng::CombinedSource& source : sources) {
    RefuseIfItAsksTheUser(source.kind, source.provider ? source.provider->GetFlags() : 0);
  }
  const auto combined = std::make_shared<rng::CombinedRng>(sources);
  return {list, [session, combined](void* buffer, std::size_t size) {
            std::vector<rng::SourceOutcome> outcomes;
            if (!combined->Generate(buffer, size, outcomes)) ThrowFailure(outcomes);
          }};
}

// The library asks for a display before each kind of plug-in. Each time it loads and unloads the X library, twelve
// times in all, unless that is in use already. That was a third of the time until the first draw.
class XLibraryInUse {
 public:
  XLibraryInUse() : handle(::dlopen("libX11.so.6", RTLD_LAZY)) {}
  XLibraryInUse(const XLibraryInUse&) = delete;
  XLibraryInUse& operator=(const XLibraryInUse&) = delete;
  ~XLibraryInUse() {
    if (handle) ::dlclose(handle);
  }

 private:
  void* const handle;
};

}  // namespace

ChosenGenerator ChooseGenerator(const ProviderParameters& choice) {
  const std::string kind = choice.kind.text;
  const std::string device = choice.hardwareId.text;
  const std::string from = choice.from.text;
  if (!from.empty() && !(kind + device).empty()) {
    throw std::invalid_argument(
        "The provider's section of OpenSSL's configuration has \"from\" together with \"kind\" or "
        "\"hardware-id\". Fix: remove one of them.");
  }
  if (kind.empty() && !device.empty()) {
    throw std::invalid_argument(
        "The provider's section of OpenSSL's configuration has \"hardware-id\" without \"kind\". "
        "Fix: "
        "add the kind.");
  }
  const XLibraryInUse xLibrary;
  const rng::Session session;
  if (!from.empty()) return ChooseSeveral(session, from);
  return ChooseOne(session, kind.empty() ? FindDefault(session) : FindKind(session, kind, device));
}

#include "tools/rngctl/drawing/chosen_generator.h"

#include "tools/rngctl/refusal.h"
#include "tools/rngctl/settings/settings_file.h"
#include "tools/rngctl/started_aggregator.h"
#include "tools/rngctl/terminal/text.h"

#include <rngaggregator/aggregator.h>

namespace {

IRngProvider& FindRng(const std::string& name) {
  if (IRngProvider* const rng = GetRng(name.c_str())) return *rng;
  throw Refusal(kNegativeAnswer, "There is no usable generator " + Quoted(name) +
                                     ". Run \"rngctl list\" to see the usable ones, and \"rngctl "
                                     "doctor\" to find out why it is missing.");
}

void SelectDevice(IRngProvider& rng, const std::string& name, const std::string& device) {
  if (device.empty() || rng.SelectDevice(device.c_str())) return;
  throw Refusal(
      kNegativeAnswer, name + " refuses the device " + Quoted(device) + ".",
      "\"rngctl list\" shows the devices of generators that report them, and their problems.");
}

IRngProvider& FindNamed(const GeneratorChoice& choice) {
  IRngProvider& rng = FindRng(choice.name);
  SelectDevice(rng, "The generator " + Quoted(choice.name), choice.device);
  return rng;
}

bool FindDefault(const std::string& settings, DefaultRngInfo& info) {
  const DirectoryLock lock = LockForReading(settings);
  return GetDefaultRng(&info, 0) == 1;
}

IRngProvider& FindDefaultRng(const std::string& settings, const std::string& device) {
  DefaultRngInfo info;
  if (!FindDefault(settings, info)) {
    throw Refusal(
        kNegativeAnswer,
        "No usable default generator is configured. Name a generator, or store a default with "
        "\"rngctl default set\".");
  }
  IRngProvider* const rng = GetRng(info.type);
  if (!rng) {
    throw Refusal(kNegativeAnswer,
                  "The configured default generator " + Quoted(info.type) +
                      " is not usable now. Run \"rngctl doctor\" to find out why.");
  }
  SelectDevice(*rng, "The default generator " + Quoted(info.type),
               device.empty() ? info.hardwareId : device);
  return *rng;
}

}  // namespace

void WithGenerator(const GeneratorChoice& choice, const std::function<void(IRngProvider&)>& work) {
  const bool isNamed = !choice.name.empty();
  const std::string settings = isNamed ? "" : FindReadableSettings();  // before plug-ins read them
  WithStartedAggregator(
      [&] { work(isNamed ? FindNamed(choice) : FindDefaultRng(settings, choice.device)); });
}

void WithGenerators(const std::string& list,
                    const std::function<void(const std::vector<rng::CombinedSource>&)>& work) {
  WithStartedAggregator([&] { work(rng::FindSources(list)); });
}

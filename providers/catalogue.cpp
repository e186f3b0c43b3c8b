#include "providers/catalogue.h"

#include <rngaggregator/aggregator.h>

namespace {

// Not inline: twelve copies would be a page of code that runs once.
__attribute__((noinline)) ProviderCatalogueEntry Row(const char* name, const char* libraryFile,
                                                     const char* factorySymbol, bool needsDisplay) {
  return {name, libraryFile, factorySymbol, needsDisplay};
}

}  // namespace

// Name, file and factory follow no rule: each is written out, none is derived.
ProviderCatalogue BuildProviderCatalogue() {
  return {{
      Row(rngBioQt, "librngbioqt.so", "GetBioQtRng", true),
      Row(rngBioX11, "librngbiox11.so", "GetBioX11Rng", true),
      Row(rngDsdr, "librngdsdr.so", "GetDsdrRng", false),
      Row(rngAccord, "librngaccord.so", "GetAccordRng", false),
      Row(rngSobol, "librngsobol.so", "GetSobolRng", false),
      Row(rngJacartaGost, "librngjacartagost.so", "GetJacartaGostRng", false),
      Row(rngRuToken, "librngrutoken.so", "GetRuTokenRng", false),
      Row(rngEsmartGost, "librngesmartgost.so", "GetEsmartGostRng", false),
      Row(rngBioKb, "librngbiokb.so", "GetBioKbRng", false),
      Row(rngUnixDev, "librngunixdev.so", "GetUnixDevRng", false),
      Row(rngGrandmaster, "librnggrandmaster.so", "GetGrandmasterRng", false),
      Row(rngBioCore, "librngbiocore.so", "GetBioCoreRng", false),
  }};
}

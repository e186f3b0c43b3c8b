#include "providers/catalogue.h"

#include <rngaggregator/aggregator.h>

// Name, file and factory follow no rule, so each is written out.
ProviderCatalogue BuildProviderCatalogue() {
  return {{
      {rngBioQt, "librngbioqt.so", "GetBioQtRng", true},
      {rngBioX11, "librngbiox11.so", "GetBioX11Rng", true},
      {rngDsdr, "librngdsdr.so", "GetDsdrRng", false},
      {rngAccord, "librngaccord.so", "GetAccordRng", false},
      {rngSobol, "librngsobol.so", "GetSobolRng", false},
      {rngJacartaGost, "librngjacartagost.so", "GetJacartaGostRng", false},
      {rngRuToken, "librngrutoken.so", "GetRuTokenRng", false},
      {rngEsmartGost, "librngesmartgost.so", "GetEsmartGostRng", false},
      {rngBioKb, "librngbiokb.so", "GetBioKbRng", false},
      {rngUnixDev, "librngunixdev.so", "GetUnixDevRng", false},
      {rngGrandmaster, "librnggrandmaster.so", "GetGrandmasterRng", false},
      {rngBioCore, "librngbiocore.so", "GetBioCoreRng", false},
  }};
}

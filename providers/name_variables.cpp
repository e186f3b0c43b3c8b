#include <rngaggregator/aggregator.h>

const char* rngBioCore = "biocore";
const char* rngBioX11 = "unixx11";
const char* rngUnixDev = "unixdev";
const char* rngBioKb = "biokbd";
const char* rngGrandmaster = "grandmaster";
const char* rngDsdr = "dsdr";
const char* rngEsmartGost = "EsmartGost";
const char* rngRuToken = "Rutoken";
const char* rngJacartaGost = "JacartaGost";
const char* rngSobol = "sobol";
const char* rngAccord = "accord";
const char* rngBioQt = "bioqt";
const char* rngBioWin = "bio";

// A function that needs another one, which no library defines.

extern "C" void NoSuchFunction();

extern "C" __attribute__((visibility("default"))) void NeedsWhatIsMissing() { NoSuchFunction(); }

// A module that has one object to give.

static int module;

__attribute__((visibility("default"))) void* GetModule(void) { return &module; }

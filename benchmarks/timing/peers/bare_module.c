// A module that returns one object.

static int module;

__attribute__((visibility("default"))) void* GetModule(void) { return &module; }

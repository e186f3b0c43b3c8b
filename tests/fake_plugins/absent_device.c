void* FindDevice(void);

__attribute__((visibility("default"))) void* FindDevice(void) { return 0; }

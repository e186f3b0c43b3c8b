#ifndef BENCHMARKS_MACHINE_SERVICE_H
#define BENCHMARKS_MACHINE_SERVICE_H

#ifdef __cplusplus
extern "C" {
#endif

/// Lets the known-path service, which the measuring program has in itself, name this directory.
void NameSettingsDirectory(const char* directory);

#ifdef __cplusplus
}
#endif

#endif

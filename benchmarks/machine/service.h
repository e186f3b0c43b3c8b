#ifndef BENCHMARKS_MACHINE_SERVICE_H
#define BENCHMARKS_MACHINE_SERVICE_H

#ifdef __cplusplus
extern "C" {
#endif

/// Makes the known-path service, which is part of the measuring program, return this directory.
void NameSettingsDirectory(const char* directory);

#ifdef __cplusplus
}
#endif

#endif

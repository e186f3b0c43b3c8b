#ifndef BENCHMARKS_TIMING_PEERS_PEERS_H
#define BENCHMARKS_TIMING_PEERS_PEERS_H

// One function for each source here. `RegisterPeers`, which the build generates, calls those whose
// packages are installed.
void RegisterGKeyFile();
void RegisterInih();
void RegisterIniparser();
void RegisterSimpleIni();
void RegisterGModule();
void RegisterLibltdl();
void RegisterOpenSsl();
void RegisterOpenSslProvider();
void RegisterOpenSslRandom();
void RegisterP11Kit();

#endif

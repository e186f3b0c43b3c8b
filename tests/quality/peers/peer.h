#ifndef TESTS_QUALITY_PEERS_PEER_H
#define TESTS_QUALITY_PEERS_PEER_H

#include "tests/quality/peers/streams.h"

/// The lines that another program prints for that input.
std::vector<std::string> RunPeer(const std::string& command, const Bytes& input);

#endif

#ifndef TESTS_QUALITY_PEERS_STREAMS_H
#define TESTS_QUALITY_PEERS_STREAMS_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

/// A kind of source, good or bad in its own way. The same blocks come in each run.
struct Stream {
  std::string name;
  std::function<Bytes(std::size_t blocks)> make;  ///< blocks of 2,500 bytes
};

/// Good sources, sources with a defect, and sources whose blocks lie on both sides of one limit of
/// FIPS 140-2.
std::vector<Stream> AllStreams();

#endif

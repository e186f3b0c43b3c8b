#ifndef HELPERS_GATHERING_SELF_TEST_H
#define HELPERS_GATHERING_SELF_TEST_H

/// Whether conditioning, generator and health tests give their known answers. Asks nobody.
bool TestGathering();

#endif

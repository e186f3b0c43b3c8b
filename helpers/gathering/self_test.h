#ifndef HELPERS_GATHERING_SELF_TEST_H
#define HELPERS_GATHERING_SELF_TEST_H

/// Whether the conditioning, the generator and the health tests give their known answers. Does not ask the user.
bool TestGathering();

#endif

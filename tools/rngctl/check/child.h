#ifndef TOOLS_RNGCTL_CHECK_CHILD_H
#define TOOLS_RNGCTL_CHECK_CHILD_H

/// The hidden command of the checker's children.
inline constexpr char kCheckChildCommand[] = "check-child";

/// Makes the one check that the parent asks for, sends what it finds, and ends the process.
[[noreturn]] void RunCheckChild(int channel);

#endif

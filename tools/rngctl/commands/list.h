#ifndef TOOLS_RNGCTL_COMMANDS_LIST_H
#define TOOLS_RNGCTL_COMMANDS_LIST_H

/// Prints the usable generators.
void RunList();

#endif

#ifndef TOOLS_RNGCTL_COMMANDS_LIST_H
#define TOOLS_RNGCTL_COMMANDS_LIST_H

/// Prints the usable generators and the devices that their plug-ins report.
void RunList(bool asJson);

#endif

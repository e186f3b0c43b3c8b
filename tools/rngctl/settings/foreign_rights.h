#ifndef TOOLS_RNGCTL_SETTINGS_FOREIGN_RIGHTS_H
#define TOOLS_RNGCTL_SETTINGS_FOREIGN_RIGHTS_H

/// Ends the command if it has the rights of another user or group than the one who runs it: a set-user-ID or
/// set-group-ID tool would let every user write with its owner's rights.
void RefuseForeignRights();

#endif

#ifndef TOOLS_RNGCTL_DOCTOR_EXAMINE_CHILD_H
#define TOOLS_RNGCTL_DOCTOR_EXAMINE_CHILD_H

/// The hidden command of the doctor's children.
inline constexpr char kDoctorChildCommand[] = "doctor-child";

/// Makes the examination that the parent asks for. The child may not survive it.
void RunDoctorChild(int channel);

#endif

#ifndef TOOLS_RNGCTL_DOCTOR_CHILD_H
#define TOOLS_RNGCTL_DOCTOR_CHILD_H

/// The hidden command of the doctor's children.
inline constexpr char kDoctorChildCommand[] = "doctor-child";

/// The part of the doctor that may not survive: makes the examination that the parent asks for.
void RunDoctorChild(int channel);

#endif

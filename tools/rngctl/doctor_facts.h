#ifndef TOOLS_RNGCTL_DOCTOR_FACTS_H
#define TOOLS_RNGCTL_DOCTOR_FACTS_H

#include "child.h"

/// What a child of the doctor has sent, as one object.
class DoctorFacts {
 public:
  explicit DoctorFacts(const ChildResult& result);
  std::string Text(const char* key) const;               ///< "" without one
  bool Is(const char* key) const;                        ///< false without one
  std::vector<std::string> List(const char* key) const;  ///< empty without one

 private:
  nlohmann::json values = nlohmann::json::object();
};

/// Whether a child has done all it had to do, which it says by its last "step".
bool HasComeToItsEnd(const ChildResult& result);

#endif

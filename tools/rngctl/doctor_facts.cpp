#include "doctor_facts.h"

#include "host.h"

DoctorFacts::DoctorFacts(const ChildResult& result) {
  for (const nlohmann::json& report : result.reports) {
    if (!report.is_object()) continue;
    values.update(report);
    if (report.contains("thrown")) values["thrownIn"] = values["step"];
  }
}

std::string DoctorFacts::Text(const char* key) const {
  const auto value = values.find(key);
  return value != values.end() && value->is_string() ? value->get<std::string>() : "";
}

bool DoctorFacts::Is(const char* key) const {
  const auto value = values.find(key);
  return value != values.end() && *value == true;
}

std::vector<std::string> DoctorFacts::List(const char* key) const {
  return values.value(key, std::vector<std::string>());
}

bool HasComeToItsEnd(const ChildResult& result) {
  return result.end == ChildEnd::kExited && result.code == kDone &&
         DoctorFacts(result).Text("step") == "end";
}

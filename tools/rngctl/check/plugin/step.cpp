#include "tools/rngctl/check/plugin/step.h"

#include <map>

namespace {

const std::map<Step, const char*> kWords = {
    {Step::kBeginning, "the beginning of the check"},
    {Step::kOpening, "dlopen"},
    {Step::kFactory, "the factory"},
    {Step::kSetSettings, "SetSettings"},
    {Step::kSetNullSettings, "SetSettings with null"},
    {Step::kSetEmptySettings, "SetSettings with empty settings"},
    {Step::kIsAvailable, "IsAvailable"},
    {Step::kIsAvailableWithNullSettings, "IsAvailable with null settings"},
    {Step::kIsAvailableWithEmptySettings, "IsAvailable with empty settings"},
    {Step::kIsAvailableInUse, "IsAvailable while in use"},
    {Step::kGetName, "GetName"},
    {Step::kGetDescription, "GetDescription"},
    {Step::kGetHardwareId, "GetHardwareId"},
    {Step::kGetReport, "GetRngReport"},
    {Step::kGetFlags, "GetFlags"},
    {Step::kSelectDevice, "SelectDevice"},
    {Step::kGenerate, "Generate"},
    {Step::kGenerateNothing, "Generate with size 0"},
    {Step::kSelfTest, "SelfTest"},
    {Step::kCancel, "Cancel"},
    {Step::kRelease, "Release"},
    {Step::kClosing, "dlclose"},
    {Step::kConcurrentCalls, "calls from several threads at the same time"},
    {Step::kThreadExit, "the exit of a thread that used it"},
    {Step::kProcessExit, "the exit of the process"},
    {Step::kProcessExitWithoutRelease, "the exit of the process without Release"}};

}  // namespace

std::string InWords(Step step) { return kWords.at(step); }

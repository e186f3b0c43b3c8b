#include "aggregator/process_state.h"

ProcessState g_state;

std::int64_t g_startCount = 0;
IRngSettings* g_currentSettings = nullptr;

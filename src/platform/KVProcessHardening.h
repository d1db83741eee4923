#pragma once

#include "model/KVAppError.h"

// Korvelle holds passwords in its memory while it hands them to the tools. Like
// the tools themselves (and password managers), it leaves no core dump behind
// and cannot be read by other processes of the same user through ptrace or
// /proc/PID/mem. Called first thing at start-up.
namespace KVProcessHardening {

// No core dumps, soft or hard limit, and the process not dumpable. An error
// names the step that the system refused.
KVOptionalError apply();

} // namespace KVProcessHardening

// How the platform's code passes the arguments of a call: each as one or more whole machine words.
#pragma once

#ifdef _WIN64
#include "frame/dispatch/convention_x64.h"
#else
#include "frame/dispatch/convention_x86.h"
#endif

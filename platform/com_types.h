// The component model's base types: the system's own headers on Windows, platform/posix/com_types.h elsewhere.
// CONTRACT.md beside this file lists what code above this layer may rely on.
#pragma once

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// windows.h must come first.
#include <objbase.h>
#include <oleauto.h>
#ifndef E_BOUNDS
#define E_BOUNDS _HRESULT_TYPEDEF_(0x8000000B)
#endif
#else
#include "platform/posix/com_types.h"
#endif

// Every interface of the type library, as generated from interfaces/qscontainers.idl.
#pragma once

#include "platform/com_types.h"

#ifndef COM_NO_WINDOWS_H
#define COM_NO_WINDOWS_H
#endif
#include "qscontainers.h"

// Classes of the host kit that are in no type library.
#pragma once

#include "platform/com_types.h"

namespace qs::host {

// {601C51A6-2D57-4355-A983-0B6B44077C0D}
inline constexpr CLSID kPropertyRegistry = {
    0x601C51A6, 0x2D57, 0x4355, {0xA9, 0x83, 0x0B, 0x6B, 0x44, 0x07, 0x7C, 0x0D}};
// {84FC45A6-D189-4C82-994E-A1EF7B525F53}
inline constexpr CLSID kPhaseActivator = {0x84FC45A6, 0xD189, 0x4C82, {0x99, 0x4E, 0xA1, 0xEF, 0x7B, 0x52, 0x5F, 0x53}};

}  // namespace qs::host

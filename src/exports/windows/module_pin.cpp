// Keeps the module loaded once it is. The idle workers of a parallel loop go on running code of this image, so a host that
// unloads it would pull the ground from under them.

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace {

// Its address names the module.
const char kMarker = 0;

struct ModulePin
{
    ModulePin()
    {
        HMODULE module = nullptr;
        GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           &kMarker,
                           &module);
    }
};

const ModulePin kPin;

}  // namespace

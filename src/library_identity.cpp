// The main library's. It stands alone in its object file, so that the linker leaves it out where a DLL brings its own.
#include "frame/module/library.h"

namespace velk::library {

const Identity kIdentity{L"VelkSupport", nullptr};

}  // namespace velk::library

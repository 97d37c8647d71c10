// The Windows headers, in the order in which they need each other.
#pragma once

#include <windows.h>

#include <ole2.h>
#include <oleauto.h>
#include <olectl.h>

// Exported by oleaut32 and documented, but missing from the headers of mingw-w64.
STDAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* helpFolder);
STDAPI UnRegisterTypeLibForUser(REFGUID library, WORD major, WORD minor, LCID locale, SYSKIND system);

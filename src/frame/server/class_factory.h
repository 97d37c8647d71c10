#pragma once

#include "frame/server/class_table.h"

namespace velk {

// Gives out the class factory of a class in the table; CLASS_E_CLASSNOTAVAILABLE for any other.
HRESULT GetClassFactory(REFCLSID clsid, REFIID iid, void** factory) noexcept;

}  // namespace velk

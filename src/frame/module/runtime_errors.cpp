// What the C++ runtime does when the standard library finds a mistake, and when nobody catches an exception. Its own
// way names what happened on a console that no client has; for that it brings a demangler, the formatting of
// floating-point numbers and another kind of string, a fifth of the whole library.
#include <cstdlib>
#include <new>

#include "platform/run_time_error.h"

namespace std {

void __throw_bad_alloc() { throw bad_alloc(); }
void __throw_bad_array_new_length() { throw bad_alloc(); }
void __throw_length_error(const char*) { throw bad_alloc(); }
void __throw_logic_error(const char*) { throw velk::RuntimeError(velk::Error::InvalidProcedureCall); }
void __throw_out_of_range_fmt(const char*, ...) { throw velk::RuntimeError(velk::Error::InvalidProcedureCall); }

}  // namespace std

namespace __gnu_cxx {

void __verbose_terminate_handler() { abort(); }

}  // namespace __gnu_cxx

#include "platform/numbers.h"

#include <string>

#include "platform/platform.h"
#include "platform/system_errors.h"

namespace velk {

LONG LongFromText(std::wstring_view text) {
    if (text.find(L'\0') != text.npos)
        throw RuntimeError(Error::TypeMismatch);  // the platform would read only what stands before it
    LONG number = 0;
    ThrowIfFailed(VarI4FromStr(std::wstring(text).data(), LOCALE_USER_DEFAULT, 0, &number));
    return number;
}

}  // namespace velk

#include "platform/numbers.h"

#include <string>

#include "platform/platform.h"
#include "platform/system_errors.h"
#include "platform/text.h"

namespace velk {

LONG LongFromText(std::wstring_view text) {
    if (HasNul(text)) throw RuntimeError(Error::TypeMismatch);
    LONG number = 0;
    ThrowIfFailed(VarI4FromStr(std::wstring(text).data(), LOCALE_USER_DEFAULT, 0, &number));
    return number;
}

}  // namespace velk

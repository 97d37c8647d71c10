#include "integrity/dat_seal.h"

#include "platform/run_time_error.h"

namespace velk {

std::u16string_view SealedRegion(std::u16string_view text) {
    const auto begin = text.find(u"[BEGIN]");
    if (begin == text.npos) throw RuntimeError(Error::InvalidProcedureCall);
    const auto end = text.rfind(u"[END]");
    return text.substr(begin, end == text.npos ? 0 : end + 1);
}

}  // namespace velk

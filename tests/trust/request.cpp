#include "trust/request.h"

#include <algorithm>

namespace velk::test {

Request::Request(const Member& member, Client& client, Arguments wanted) : id(member.id), flags(member.kind) {
    for (const Taken taken : member.parameters) {
        arguments.push_back(wanted == Arguments::Sane || OneIn(2) ? client.Sane(taken) : client.Any());
    }
    std::reverse(arguments.begin(), arguments.end());
    parameters = {arguments.data(), names.data(), static_cast<UINT>(arguments.size()), member.IsLet() ? 1u : 0u};
}

bool IsProper(HRESULT answer) {
    const bool automation = answer >= DISP_E_UNKNOWNINTERFACE && answer <= DISP_E_BUFFERTOOSMALL;
    return answer == S_OK || automation || answer == E_INVALIDARG || answer == E_POINTER || answer == E_OUTOFMEMORY;
}

}  // namespace velk::test

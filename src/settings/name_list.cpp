#include "settings/name_list.h"

namespace velk {

std::vector<std::string_view> SplitNames(std::string_view list, EmptyNames emptyNames) {
    std::vector<std::string_view> names;
    for (std::size_t end = list.find('\0'); end != list.npos; end = list.find('\0')) {
        if (end > 0 || emptyNames == EmptyNames::Keep) names.push_back(list.substr(0, end));
        list.remove_prefix(end + 1);
    }
    return names;
}

}  // namespace velk

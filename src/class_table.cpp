#include "frame/class_table.h"

#include "containers/con_cat.h"
#include "containers/linked_list.h"
#include "containers/stack.h"
#include "integrity/crc32.h"
#include "integrity/dat_file.h"
#include "winhelpers/form_size_constraint.h"
#include "winhelpers/list_view_extended.h"

namespace velk {

std::span<const ClassEntry> Classes() noexcept {
    static constexpr ClassEntry kClasses[] = {
        EntryOf<CCRC32>(),
        EntryOf<CDatFile>(),
        EntryOf<CLinkedList>(),
        EntryOf<CStack>(),
        EntryOf<CConCat>(),
        EntryOf<CFormSizeConstraint>(),
        EntryOf<CListViewExtended>(),
    };
    return kClasses;
}

}  // namespace velk

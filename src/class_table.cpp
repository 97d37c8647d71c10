#include "frame/class_table.h"

#include "containers/con_cat.h"
#include "containers/linked_list.h"
#include "containers/stack.h"
#include "integrity/crc32.h"
#include "integrity/dat_file.h"
#include "sysinfo/api_disks.h"
#include "sysinfo/computer_info.h"
#include "sysinfo/internet_connection.h"
#include "sysinfo/memory_status.h"
#include "sysinfo/mm_timer.h"
#include "sysinfo/os_info.h"

namespace velk {

std::span<const ClassEntry> Classes() noexcept {
    static constexpr ClassEntry kClasses[] = {
        EntryOf<CCRC32>(),
        EntryOf<CDatFile>(),
        EntryOf<CLinkedList>(),
        EntryOf<CStack>(),
        EntryOf<CConCat>(),
        EntryOf<CAPIDisks>(),
        EntryOf<COSInfo>(),
        EntryOf<CComputerInfo>(),
        EntryOf<CMemoryStatus>(),
        EntryOf<CMMTimer>(),
        EntryOf<CInternetConnection>(),
    };
    return kClasses;
}

}  // namespace velk

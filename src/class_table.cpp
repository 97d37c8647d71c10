#include "frame/class_table.h"

#include "integrity/crc32.h"
#include "integrity/dat_file.h"

namespace velk {

std::span<const ClassEntry> Classes() noexcept {
    static constexpr ClassEntry kClasses[] = {
        EntryOf<CCRC32>(),
        EntryOf<CDatFile>(),
    };
    return kClasses;
}

}  // namespace velk
